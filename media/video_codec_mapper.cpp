#include "media/video_codec_mapper.h"

#include <cstddef>

#include "codecs/annexb_converter.h"
#include "codecs/avc_configuration.h"
#include "codecs/hevc_configuration.h"
#include "dshow/media_subtypes.h"
#include "media/format_block.h"

namespace media {

namespace {

static_assert(sizeof(VIDEOINFOHEADER) == 88);
static_assert(sizeof(VIDEOINFOHEADER2) == 112);
static_assert(sizeof(BITMAPINFOHEADER) == 40);

constexpr UINT64 kNsInReferenceTime = 100;

using Bytes = std::vector<BYTE>;
using OptionalBytes = std::optional<Bytes>;

// Signed values are written as they are stored: a negative one turns into its two's complement.
UINT64 AsStored(INT64 value) {
    return static_cast<UINT64>(value);
}

template <typename Header>
void DescribePicture(const Header& header, CodecDescription& description) {
    description.defaultDurationNs = AsStored(header.AvgTimePerFrame) * kNsInReferenceTime;
    description.video =
        VideoDescription{AsStored(header.bmiHeader.biWidth), AsStored(header.bmiHeader.biHeight), std::nullopt};
}

void DescribeDisplay(const VIDEOINFOHEADER& header, CodecDescription& description) {
    description.video->display = DisplaySize{AsStored(header.bmiHeader.biWidth), AsStored(header.bmiHeader.biHeight)};
}

// Deliberately the aspect ratio itself, not a size in pixels.
void DescribeDisplay(const VIDEOINFOHEADER2& header, CodecDescription& description) {
    description.video->display = DisplaySize{header.dwPictAspectRatioX, header.dwPictAspectRatioY};
}

Bytes BitmapHeaderBytes(const BITMAPINFOHEADER& header) {
    const auto* const begin = reinterpret_cast<const BYTE*>(&header);
    return {begin, begin + sizeof(header)};
}

// ---- One function a layout; false when the format block does not hold it ----------------------------------------

bool DescribeMpeg1(const FormatBlock& block, CodecDescription& description) {
    constexpr size_t kSizeOffset = offsetof(MPEG1VIDEOINFO, cbSequenceHeader);
    constexpr size_t kHeaderOffset = offsetof(MPEG1VIDEOINFO, bSequenceHeader);
    const auto header = block.Read<VIDEOINFOHEADER>();
    const auto size = block.Read<DWORD>(kSizeOffset);
    const auto sequenceHeader = block.Slice(kHeaderOffset, size.value_or(0));
    if (!header || !size || !sequenceHeader) {
        return false;
    }
    DescribePicture(*header, description);
    DescribeDisplay(*header, description);
    description.codecPrivate = CopyOf(*sequenceHeader);
    return true;
}

bool DescribeVp8(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    return true;
}

bool DescribeVp9(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER2>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    description.codecPrivate = CopyOf(*block.From(sizeof(VIDEOINFOHEADER2)));
    return true;
}

// Deliberately without the bytes that may follow the bitmap header.
bool DescribeVfw(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    DescribeDisplay(*header, description);
    description.codecPrivate = BitmapHeaderBytes(header->bmiHeader);
    return true;
}

bool DescribeVfw2(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER2>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    DescribeDisplay(*header, description);
    const ByteView extra = *block.From(sizeof(VIDEOINFOHEADER2));
    Bytes codecPrivate = BitmapHeaderBytes(header->bmiHeader);
    codecPrivate.insert(codecPrivate.end(), extra.begin(), extra.end());
    description.codecPrivate = std::move(codecPrivate);
    return true;
}

struct Mpeg2VideoInfo {
    VIDEOINFOHEADER2 header;
    BYTE profile; // the low bytes of the fields
    BYTE level;
    ByteView sequenceHeader;
};

std::optional<Mpeg2VideoInfo> ReadMpeg2VideoInfo(const FormatBlock& block) {
    constexpr size_t kHeaderOffset = offsetof(MPEG2VIDEOINFO, dwSequenceHeader);
    const auto header = block.Read<VIDEOINFOHEADER2>();
    const auto size = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, cbSequenceHeader));
    const auto profile = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwProfile));
    const auto level = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwLevel));
    const auto sequenceHeader = block.Slice(kHeaderOffset, size.value_or(0));
    if (!header || !size || !profile || !level || !sequenceHeader) {
        return std::nullopt;
    }
    return Mpeg2VideoInfo{*header, static_cast<BYTE>(*profile), static_cast<BYTE>(*level), *sequenceHeader};
}

OptionalBytes SequenceHeader(const Mpeg2VideoInfo& info) {
    return CopyOf(info.sequenceHeader);
}

OptionalBytes AvcFromLengths(const Mpeg2VideoInfo& info) {
    return codecs::BuildAvcConfiguration(info.sequenceHeader, info.profile, info.level);
}

OptionalBytes AvcFromByteStream(const Mpeg2VideoInfo& info) {
    const Bytes units =
        codecs::ConvertAnnexB(info.sequenceHeader, codecs::kStartCodeLengthBytes, codecs::kParameterSetLengthSizeBytes);
    return codecs::BuildAvcConfiguration(units, info.profile, info.level);
}

OptionalBytes HevcFromByteStream(const Mpeg2VideoInfo& info) {
    return codecs::BuildHevcConfiguration(info.sequenceHeader);
}

template <OptionalBytes (*BuildPrivate)(const Mpeg2VideoInfo&)>
bool DescribeMpeg2(const FormatBlock& block, CodecDescription& description) {
    const std::optional<Mpeg2VideoInfo> info = ReadMpeg2VideoInfo(block);
    if (!info) {
        return false;
    }
    DescribePicture(info->header, description);
    DescribeDisplay(info->header, description);
    description.codecPrivate = BuildPrivate(*info);
    return description.codecPrivate.has_value();
}

// ---- The rows, in the order in which they are tried --------------------------------------------------------------

struct VideoRow {
    const GUID* format;
    const GUID* subtype; // null: any
    const char* codecId;
    bool (*describe)(const FormatBlock&, CodecDescription&);
};

// clang-format off
constexpr VideoRow kRows[] = {
    {&FORMAT_MPEGVideo,  &MEDIASUBTYPE_MPEG1Payload,   "V_MPEG1",          DescribeMpeg1},
    {&FORMAT_MPEG2Video, &mediasubtype::kTheora,       "V_THEORA",         DescribeMpeg2<SequenceHeader>},
    {&FORMAT_MPEG2Video, &MEDIASUBTYPE_MPEG2_VIDEO,    "V_MPEG2",          DescribeMpeg2<SequenceHeader>},
    {&FORMAT_MPEG2Video, &mediasubtype::kMp4v,         "V_MPEG4/ISO/ASP",  DescribeMpeg2<SequenceHeader>},
    {&FORMAT_MPEG2Video, &mediasubtype::kAvc1,         "V_MPEG4/ISO/AVC",  DescribeMpeg2<AvcFromLengths>},
    {&FORMAT_MPEG2Video, &mediasubtype::kH264AnnexB,   "V_MPEG4/ISO/AVC",  DescribeMpeg2<AvcFromByteStream>},
    // The header of length-prefixed H.265 is a complete configuration record already.
    {&FORMAT_MPEG2Video, &mediasubtype::kHvc1,         "V_MPEGH/ISO/HEVC", DescribeMpeg2<SequenceHeader>},
    {&FORMAT_MPEG2Video, &mediasubtype::kHevcAnnexB,   "V_MPEGH/ISO/HEVC", DescribeMpeg2<HevcFromByteStream>},
    {&FORMAT_VideoInfo,  &mediasubtype::kVp8,          "V_VP8",            DescribeVp8},
    {&FORMAT_VideoInfo2, &mediasubtype::kVp9,          "V_VP9",            DescribeVp9},
    {&FORMAT_VideoInfo,  nullptr,                      "V_MS/VFW/FOURCC",  DescribeVfw},
    {&FORMAT_VideoInfo2, nullptr,                      "V_MS/VFW/FOURCC",  DescribeVfw2},
};
// clang-format on

const VideoRow* FindRow(const AM_MEDIA_TYPE& type) {
    for (const VideoRow& row : kRows) {
        if (type.formattype == *row.format && (row.subtype == nullptr || type.subtype == *row.subtype)) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

CodecDescription DescribeVideoCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription unsupported;
    unsupported.lacing = false;
    const VideoRow* const row = type.majortype == MEDIATYPE_Video ? FindRow(type) : nullptr;
    CodecDescription description = unsupported;
    if (row == nullptr || !row->describe(FormatBlock(type), description)) {
        return unsupported;
    }
    description.codecId = row->codecId;
    return description;
}

} // namespace media

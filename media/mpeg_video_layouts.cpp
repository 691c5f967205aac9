#include "media/mpeg_video_layouts.h"

#include <cstddef>

#include "codecs/annexb_converter.h"
#include "codecs/avc_configuration.h"
#include "codecs/hevc_configuration.h"
#include "media/video_fields.h"

namespace media {

namespace {

static_assert(sizeof(VIDEOINFOHEADER) == 88);
static_assert(sizeof(VIDEOINFOHEADER2) == 112);

using OptionalBytes = std::optional<std::vector<BYTE>>;

// ---- MPEG-1 ------------------------------------------------------------------------------------------------------

bool DescribeMpeg1(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER>();
    const auto size = block.Read<DWORD>(offsetof(MPEG1VIDEOINFO, cbSequenceHeader));
    const auto sequenceHeader = block.Slice(offsetof(MPEG1VIDEOINFO, bSequenceHeader), size.value_or(0));
    if (!header || !size || !sequenceHeader) {
        return false;
    }
    DescribePicture(*header, description);
    description.codecPrivate = CopyOf(*sequenceHeader);
    return true;
}

std::optional<CMediaType> Mpeg1TypeOf(const CodecRow& /*row*/, const TrackFacts& track) {
    return Mpeg1VideoType(PictureOf(track), track.codecPrivate);
}

// ---- MPEG-2 and what borrows its block ---------------------------------------------------------------------------

struct Mpeg2VideoInfo {
    VIDEOINFOHEADER2 header;
    BYTE profile; // the low bytes of the fields
    BYTE level;
    ByteView sequenceHeader;
};

std::optional<Mpeg2VideoInfo> ReadMpeg2VideoInfo(const FormatBlock& block) {
    const auto header = block.Read<VIDEOINFOHEADER2>();
    const auto size = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, cbSequenceHeader));
    const auto profile = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwProfile));
    const auto level = block.Read<DWORD>(offsetof(MPEG2VIDEOINFO, dwLevel));
    const auto sequenceHeader = block.Slice(offsetof(MPEG2VIDEOINFO, dwSequenceHeader), size.value_or(0));
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
    const std::vector<BYTE> units =
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
    description.codecPrivate = BuildPrivate(*info);
    return description.codecPrivate.has_value();
}

std::optional<CMediaType> Mpeg2TypeOf(const CodecRow& row, const TrackFacts& track) {
    return Mpeg2VideoType(*row.subtype, PictureOf(track), track.codecPrivate);
}

std::optional<CMediaType> AvcTypeOf(const CodecRow& row, const TrackFacts& track) {
    const codecs::AvcConfiguration avc = codecs::ParseAvcConfiguration(track.codecPrivate);
    return Mpeg2VideoType(*row.subtype, PictureOf(track), avc.parameterSets,
                          {avc.profile, avc.level, codecs::kSampleLengthSizeBytes});
}

} // namespace

constexpr CodecLayout kMpeg1Layout{.describe = DescribeMpeg1, .typeOf = Mpeg1TypeOf};
constexpr CodecLayout kMpeg2Layout{.describe = DescribeMpeg2<SequenceHeader>, .typeOf = Mpeg2TypeOf};
constexpr CodecLayout kAvcLengthsLayout{.describe = DescribeMpeg2<AvcFromLengths>, .typeOf = AvcTypeOf};
constexpr CodecLayout kAvcByteStreamLayout{.describe = DescribeMpeg2<AvcFromByteStream>, .hasStartCodes = true};
constexpr CodecLayout kHevcByteStreamLayout{.describe = DescribeMpeg2<HevcFromByteStream>, .hasStartCodes = true};

} // namespace media

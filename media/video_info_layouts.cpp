#include "media/video_info_layouts.h"

#include <cstring>

#include "media/video_fields.h"

namespace media {

namespace {

static_assert(sizeof(BITMAPINFOHEADER) == 40);

// ---- VP8 and VP9 -------------------------------------------------------------------------------------------------

bool DescribeVp8(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER>();
    if (!header) {
        return false;
    }
    DescribePixels(header->AvgTimePerFrame, header->bmiHeader, description);
    return true;
}

std::optional<CMediaType> Vp8TypeOf(const CodecRow& row, const TrackFacts& track) {
    const Picture picture = PictureOf(track);
    return VideoInfoType(*row.subtype, picture, BitmapHeader(picture, row.subtype->Data1), {});
}

bool DescribeVp9(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER2>();
    if (!header) {
        return false;
    }
    DescribePixels(header->AvgTimePerFrame, header->bmiHeader, description);
    description.codecPrivate = CopyOf(*block.From(sizeof(VIDEOINFOHEADER2)));
    return true;
}

std::optional<CMediaType> Vp9TypeOf(const CodecRow& row, const TrackFacts& track) {
    const Picture picture = PictureOf(track);
    return VideoInfo2Type(*row.subtype, picture, BitmapHeader(picture, row.subtype->Data1), track.codecPrivate);
}

// ---- Every other codec -------------------------------------------------------------------------------------------

std::vector<BYTE> BitmapHeaderBytes(const BITMAPINFOHEADER& header) {
    const auto* const begin = reinterpret_cast<const BYTE*>(&header);
    return {begin, begin + sizeof(header)};
}

// Deliberately without the bytes that may follow the bitmap header: readers of this writer's files find its 40 bytes.
bool DescribeVfw(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    description.codecPrivate = BitmapHeaderBytes(header->bmiHeader);
    return true;
}

bool DescribeVfw2(const FormatBlock& block, CodecDescription& description) {
    const auto header = block.Read<VIDEOINFOHEADER2>();
    if (!header) {
        return false;
    }
    DescribePicture(*header, description);
    const ByteView extra = *block.From(sizeof(VIDEOINFOHEADER2));
    std::vector<BYTE> codecPrivate = BitmapHeaderBytes(header->bmiHeader);
    codecPrivate.insert(codecPrivate.end(), extra.begin(), extra.end());
    description.codecPrivate = std::move(codecPrivate);
    return true;
}

// None as well for a subtype that has a row of its own with that format block.
template <CMediaType (*Build)(const GUID&, const Picture&, const BITMAPINFOHEADER&, ByteView)>
std::optional<CMediaType> VfwTypeOf(const CodecRow& row, const TrackFacts& track) {
    BITMAPINFOHEADER bitmap;
    if (track.codecPrivate.size() < sizeof(bitmap)) {
        return {};
    }
    std::memcpy(&bitmap, track.codecPrivate.data(), sizeof(bitmap));
    const ByteView extra = ByteView(track.codecPrivate).subspan(sizeof(bitmap));
    std::optional<CMediaType> type = Build(SubtypeOf(bitmap), PictureOf(track), bitmap, extra);
    return FindCodecRow(*type) == &row ? std::move(type) : std::nullopt;
}

// The plain block has room for neither the bytes behind the bitmap header nor a display size of its own.
bool IsMoreThanABitmap(const TrackFacts& track) {
    const Picture picture = PictureOf(track);
    return track.codecPrivate.size() > sizeof(BITMAPINFOHEADER) ||
           picture.aspectX != static_cast<DWORD>(picture.width) ||
           picture.aspectY != static_cast<DWORD>(picture.height);
}

} // namespace

constexpr CodecLayout kVp8Layout{.describe = DescribeVp8, .typeOf = Vp8TypeOf};
constexpr CodecLayout kVp9Layout{.describe = DescribeVp9, .typeOf = Vp9TypeOf};
constexpr CodecLayout kVfwLayout{
    .describe = DescribeVfw, .typeOf = VfwTypeOf<VideoInfoType>, .leavesOut = IsMoreThanABitmap};
constexpr CodecLayout kVfw2Layout{.describe = DescribeVfw2, .typeOf = VfwTypeOf<VideoInfo2Type>};

} // namespace media

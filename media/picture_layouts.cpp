#include "media/picture_layouts.h"

#include <cstring>

#include "media/uncompressed_pictures.h"
#include "media/video_fields.h"

namespace media {

namespace {

bool DescribePictureAlone(const FormatBlock& /*block*/, CodecDescription& description) {
    description.video = VideoDescription();
    return true;
}

template <typename Structure>
bool DescribeExtraPicture(const FormatBlock& block, CodecDescription& description) {
    const auto extra = block.From(sizeof(Structure));
    if (!extra) {
        return false;
    }
    description.video = VideoDescription();
    description.codecPrivate = CopyOf(*extra);
    return true;
}

// biSize counts the bytes behind the header, as codecs of Windows expect it.
std::optional<CMediaType> ExtraPictureTypeOf(const CodecRow& row, const TrackFacts& track) {
    const Picture picture = PictureOf(track);
    BITMAPINFOHEADER bitmap = BitmapHeader(picture, row.subtype->Data1);
    bitmap.biSize += static_cast<DWORD>(track.codecPrivate.size());
    return VideoInfo2Type(*row.subtype, picture, bitmap, track.codecPrivate);
}

std::optional<CMediaType> ProResTypeOf(const CodecRow& row, const TrackFacts& track) {
    const DWORD fourCc = row.subtype->Data1;
    const bool isThat = track.codecPrivate.size() == sizeof(fourCc) &&
                        std::memcmp(track.codecPrivate.data(), &fourCc, sizeof(fourCc)) == 0;
    const Picture picture = PictureOf(track);
    return isThat ? std::optional(VideoInfo2Type(*row.subtype, picture, BitmapHeader(picture, fourCc), {}))
                  : std::nullopt;
}

// None for the subtypes of the system that are no FourCCs: their rows may come in two orders.
std::optional<CMediaType> UncompressedTypeOf(const CodecRow& row, const TrackFacts& track) {
    const UncompressedKind* const kind = FindUncompressedKind(*row.subtype);
    if (kind == nullptr || kind->isDib || kind->fourCc != track.video.uncompressedFourCc) {
        return std::nullopt;
    }
    const Picture picture = PictureOf(track);
    BITMAPINFOHEADER bitmap = BitmapHeader(picture, kind->fourCc);
    bitmap.biBitCount = kind->bits;
    bitmap.biSizeImage = PictureBytes(*kind, picture.width, picture.height);
    CMediaType type = VideoInfo2Type(*row.subtype, picture, bitmap, {});
    type.SetTemporalCompression(FALSE);
    return type;
}

} // namespace

constexpr CodecLayout kPictureLayout{.describe = DescribePictureAlone};
constexpr CodecLayout kExtraPictureLayout{.describe = DescribeExtraPicture<VIDEOINFOHEADER>};
constexpr CodecLayout kExtraPicture2Layout{.describe = DescribeExtraPicture<VIDEOINFOHEADER2>,
                                           .typeOf = ExtraPictureTypeOf};
constexpr CodecLayout kProResLayout{.describe = DescribePictureAlone, .typeOf = ProResTypeOf};
constexpr CodecLayout kUncompressedLayout{.describe = DescribePictureAlone, .typeOf = UncompressedTypeOf};

} // namespace media

#include "media/picture_layouts.h"

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

} // namespace

constexpr CodecLayout kPictureLayout{.describe = DescribePictureAlone};
constexpr CodecLayout kExtraPictureLayout{.describe = DescribeExtraPicture<VIDEOINFOHEADER>};
constexpr CodecLayout kExtraPicture2Layout{.describe = DescribeExtraPicture<VIDEOINFOHEADER2>,
                                           .typeOf = ExtraPictureTypeOf};

} // namespace media

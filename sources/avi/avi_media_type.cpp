#include "sources/avi/avi_media_type.h"

#include <cstring>
#include <optional>
#include <utility>

#include "dshow/ref_time.h"
#include "media/format_builder.h"

namespace avi {

namespace {

constexpr DWORD kVideoType = 0x73646976;          // 'vids'
constexpr DWORD kAudioType = 0x73647561;          // 'auds'
constexpr DWORD kMaxPictureSeconds = 1000 * 3600; // longer ones are damage

// The picture's header and all that follows it (palette, codec data) end the block.
CMediaType VideoType(const AviStream& stream) {
    BITMAPINFOHEADER bitmap;
    if (stream.format.size() < sizeof(bitmap)) {
        return {};
    }
    std::memcpy(&bitmap, stream.format.data(), sizeof(bitmap));
    media::Picture picture;
    if (stream.rate > 0 && stream.scale / stream.rate <= kMaxPictureSeconds) {
        picture.frameDuration = kReferenceTimesPerSecond * stream.scale / stream.rate;
    }
    const media::ByteView extra = media::ByteView(stream.format).subspan(sizeof(bitmap));
    CMediaType type = media::VideoInfoType(media::SubtypeOf(bitmap), picture, bitmap, extra);
    type.SetTemporalCompression(media::IsUncompressed(bitmap) ? FALSE : TRUE);
    return type;
}

CMediaType AudioType(const AviStream& stream) {
    std::optional<CMediaType> type = media::WholeWaveType(stream.format);
    if (!type) {
        return {};
    }
    type->SetSampleSize(stream.sampleSize > 0 ? stream.sampleSize : 1); // as a new media type says where nothing does
    return std::move(*type);
}

} // namespace

CMediaType MediaTypeOf(const AviStream& stream) {
    switch (stream.type) {
    case kVideoType:
        return VideoType(stream);
    case kAudioType:
        return AudioType(stream);
    default:
        return {};
    }
}

} // namespace avi

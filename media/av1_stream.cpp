#include "media/av1_stream.h"

#include "codecs/av1_configuration.h"
#include "codecs/av1_units.h"
#include "dshow/media_subtypes.h"
#include "media/codec_description.h"

namespace media {

namespace {

// Headers with their metadata have 20 to 60 bytes; one that describes every layer may have 200.
constexpr UINT64 kPrivateRoom = 256;

} // namespace

bool IsAv1(const AM_MEDIA_TYPE& type) {
    return type.subtype == mediasubtype::kAv01 && type.majortype == MEDIATYPE_Video;
}

bool IsAv1Keyframe(ByteView frame, bool isSyncPoint) {
    const std::optional<codecs::Av1RandomAccess> access = codecs::RandomAccessOfAv1(frame);
    if (!access || *access == codecs::Av1RandomAccess::WithoutHeader) {
        return isSyncPoint;
    }
    return *access == codecs::Av1RandomAccess::Yes;
}

UINT64 LatePrivateRoom(const AM_MEDIA_TYPE& type) {
    return IsAv1(type) && !DescribeStrictCodec(type).codecPrivate ? kPrivateRoom : 0;
}

std::optional<std::vector<BYTE>> LatePrivateOf(ByteView keyframe) {
    return codecs::BuildAv1Configuration(keyframe);
}

} // namespace media

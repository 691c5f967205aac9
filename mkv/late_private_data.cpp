#include "mkv/late_private_data.h"

#include "media/av1_stream.h"
#include "mkv/element_values.h"

namespace mkv {

void CLatePrivateData::reserve(libmatroska::KaxTrackEntry& entry, UINT32 stream, const AM_MEDIA_TYPE& type) {
    if (const UINT64 room = media::LatePrivateRoom(type); room > 0) {
        m_places.try_emplace(stream, entry, room);
    }
}

void CLatePrivateData::fill(UINT32 stream, std::span<const BYTE> keyframe, CFilePatcher& patcher) {
    const auto place = m_places.find(stream);
    if (place == m_places.end()) {
        return;
    }
    if (const auto bytes = media::LatePrivateOf(keyframe)) {
        libmatroska::KaxCodecPrivate element;
        SetBytes(element, *bytes);
        (void)place->second.fill(element, patcher);
    }
}

} // namespace mkv

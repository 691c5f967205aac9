#include "mux/untimed_audio_clock.h"

#include <cstddef>
#include <cstring>

#include "dshow/media_subtypes.h"
#include "dshow/ref_time.h"

namespace {

constexpr double kNsPerSecond = 1e9;

// 0 when the format block does not reach as far. The older structures without a size field have it, too.
DWORD AverageBytesPerSecond(const AM_MEDIA_TYPE& type) {
    constexpr size_t kOffset = offsetof(WAVEFORMATEX, nAvgBytesPerSec);
    DWORD bytesPerSecond = 0;
    if (type.pbFormat != nullptr && type.cbFormat >= kOffset + sizeof bytesPerSecond) {
        std::memcpy(&bytesPerSecond, type.pbFormat + kOffset, sizeof bytesPerSecond);
    }
    return bytesPerSecond;
}

INT64 DurationOf(UINT32 bytes, const AM_MEDIA_TYPE& type) {
    const DWORD bytesPerSecond = AverageBytesPerSecond(type);
    if (bytesPerSecond == 0) {
        return 0;
    }
    return ReferenceTimeFromNs(static_cast<INT64>(kNsPerSecond / bytesPerSecond * bytes));
}

} // namespace

void CUntimedAudioClock::Stamp(CMuxInterPacket& packet, const AM_MEDIA_TYPE& type) {
    if (!packet.hasTime && type.majortype == MEDIATYPE_Audio) {
        if (type.subtype == mediasubtype::kMp3) {
            packet.start = m_nextTime;
            packet.stop = AddSaturated(m_nextTime, static_cast<UINT64>(DurationOf(packet.size, type)));
            packet.hasTime = true;
        } else if (type.subtype == mediasubtype::kVorbis) {
            packet.start = m_nextTime;
            packet.stop = m_nextTime;
            packet.hasTime = true;
        }
    }
    m_nextTime = packet.stop;
}

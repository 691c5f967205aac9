#include "mux/untimed_audio_clock.h"

#include <cstdint>
#include <cstring>

#include "dshow/media_subtypes.h"

namespace {

constexpr double kNsPerSecond = 1e9;
constexpr INT64 kNsPerUnit = 100;

// 0 when the format block is no WAVEFORMATEX.
DWORD AverageBytesPerSecond(const AM_MEDIA_TYPE& type) {
    if (type.pbFormat == nullptr || type.cbFormat < sizeof(WAVEFORMATEX)) {
        return 0;
    }
    WAVEFORMATEX format;
    std::memcpy(&format, type.pbFormat, sizeof format);
    return format.nAvgBytesPerSec;
}

INT64 DurationOf(UINT32 bytes, const AM_MEDIA_TYPE& type) {
    const DWORD bytesPerSecond = AverageBytesPerSecond(type);
    if (bytesPerSecond == 0) {
        return 0;
    }
    return static_cast<INT64>(kNsPerSecond / bytesPerSecond * bytes) / kNsPerUnit;
}

INT64 AddSaturated(INT64 time, INT64 duration) {
    return time > INT64_MAX - duration ? INT64_MAX : time + duration;
}

} // namespace

void UntimedAudioClock::Stamp(CMuxInterPacket& packet, const AM_MEDIA_TYPE& type) {
    if (!packet.hasTime && type.majortype == MEDIATYPE_Audio) {
        if (type.subtype == mediasubtype::kMp3) {
            packet.start = m_nextTime;
            packet.stop = AddSaturated(m_nextTime, DurationOf(packet.size, type));
            packet.hasTime = true;
        } else if (type.subtype == mediasubtype::kVorbis) {
            packet.start = m_nextTime;
            packet.stop = m_nextTime;
            packet.hasTime = true;
        }
    }
    m_nextTime = packet.stop;
}

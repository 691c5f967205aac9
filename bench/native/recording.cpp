#include "bench/native/recording.h"

#include "dshow/ref_time.h"

namespace bench {

namespace {

constexpr size_t kSoundBytes = 62;
constexpr BYTE kPayload = 0x55;

} // namespace

Recording::Recording(UINT64 seconds, size_t pictureBytes)
    : m_seconds(seconds), m_picture(pictureBytes, kPayload), m_sound(kSoundBytes, kPayload) {}

MuxerJob::Types Recording::Types() {
    return {TrackOf(LoadTrack::Kind::Avc).type, TrackOf(LoadTrack::Kind::Opus).type};
}

const LoadPacket* Recording::Packet(size_t input, UINT64 packet) {
    const bool picture = input == 0;
    const UINT64 perSecond = picture ? kPicturesPerSecond : kSoundsPerSecond;
    if (packet >= m_seconds * perSecond) {
        return nullptr;
    }
    const auto& bytes = picture ? m_picture : m_sound;
    const INT64 duration = kReferenceTimesPerSecond / static_cast<INT64>(perSecond);
    const INT64 start = static_cast<INT64>(packet) * duration;
    LoadPacket& current = m_current[input].packet;
    current = {bytes.data(),     static_cast<UINT32>(bytes.size()),           static_cast<UINT32>(input), start,
               start + duration, !picture || packet % kPicturesPerSecond == 0};
    return &current;
}

} // namespace bench

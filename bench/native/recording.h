// Recording: the packets of one camera with sound, made up while they are asked for, so that a day of them needs no
// memory: pictures of 25 a second with a keyframe a second, and Opus packets of 20 ms.
//
// Units: bytes, seconds. Owner: the measurement. Threads: each input is asked by its own producer.
#pragma once

#include <array>
#include <vector>

#include "bench/native/muxer_job.h"
#include "bench/native/packet_load.h"

namespace bench {

class Recording {
  public:
    static constexpr UINT64 kPicturesPerSecond = 25;
    static constexpr UINT64 kSoundsPerSecond = 50;

    Recording(UINT64 seconds, size_t pictureBytes);
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    [[nodiscard]] static MuxerJob::Types Types();
    [[nodiscard]] UINT64 Packets() const { return m_seconds * (kPicturesPerSecond + kSoundsPerSecond); }
    // The next call for the same input makes another one of it.
    const LoadPacket* Packet(size_t input, UINT64 packet);

  private:
    const UINT64 m_seconds;
    const std::vector<BYTE> m_picture;
    const std::vector<BYTE> m_sound;
    struct alignas(64) Current { // one a producer, on a cache line of its own
        LoadPacket packet;
    };
    std::array<Current, 2> m_current;
};

} // namespace bench

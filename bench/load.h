// Load: what the inputs of one run deliver: so many packets each, all alike but for their times.
//
// Units: bytes, times in 100 ns. Owner: itself, a value. Threads: read by all producers of a run.
#pragma once

#include <string>
#include <vector>

#include "tests/support/media_type_value.h"
#include "win/platform.h"

namespace bench {

struct Load {
    std::string name;
    test_support::MediaTypeValue type;
    std::vector<BYTE> payload; // of every packet
    size_t inputs = 1;
    UINT64 packetsPerInput = 0;
    INT64 packetTicks = 0;    // the duration of a packet, of 100 ns
    UINT64 keyframeEvery = 1; // packets

    [[nodiscard]] UINT64 TotalPackets() const { return packetsPerInput * inputs; }
    [[nodiscard]] UINT64 TotalBytes() const { return TotalPackets() * payload.size(); }
    [[nodiscard]] INT64 StartOf(UINT64 packet) const { return static_cast<INT64>(packet) * packetTicks; }
    [[nodiscard]] bool IsKeyframe(UINT64 packet) const { return packet % keyframeEvery == 0; }
};

// 400 bytes each 10 ms.
[[nodiscard]] Load SmallAudio(size_t inputs, UINT64 packetsPerInput);
// 64 KiB each 40 ms, a keyframe a second, passed on as they are.
[[nodiscard]] Load LargeVideo(size_t inputs, UINT64 packetsPerInput);
// The same as an H.264 byte stream, whose start codes are searched and replaced.
[[nodiscard]] Load LargeByteStreamVideo(size_t inputs, UINT64 packetsPerInput);

} // namespace bench

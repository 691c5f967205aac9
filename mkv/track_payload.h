// What each packet needs of its track, and the bytes that its block gets.
// Units: bytes. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include "mkv/cluster_bytes.h"
#include "mkv/writer_input.h"

namespace mkv {

struct TrackFacts {
    const AM_MEDIA_TYPE& type;
    UINT16 number;
    bool isConverted; // its packets become other bytes
};

// Only video has blocks that depend on others. Throws kUnsupportedTypeError.
[[nodiscard]] bool IsKeyframe(const Packet& packet, const TrackFacts& track);

// As strict files have it: AV1 says so itself, whatever the packet does.
[[nodiscard]] bool IsStrictKeyframe(const Packet& packet, const TrackFacts& track, const FrameBytes& frame);

// None is left of a packet without data, and of one that no reader would take. What had to be copied lies in the room.
[[nodiscard]] FrameBytes PayloadOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room);
// As strict files have it.
[[nodiscard]] FrameBytes StrictPayloadOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room);

} // namespace mkv

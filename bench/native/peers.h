// What writes a load into a file: our muxer, and those that users would take instead. Each is given the same packets
// from the same memory in the same order; ours, as a filter, gets them from a thread an input.
//
// Errors: std::runtime_error, also when the file is smaller than its payload.
#pragma once

#include <string>
#include <vector>

#include "bench/native/packet_load.h"

namespace bench {

struct Peer {
    const char* name;
    void (*write)(const PacketLoad& load, const std::string& path);
    bool finished; // the file has a head
};

void WriteWithOurs(const PacketLoad& load, const std::string& path);
// libavformat's Matroska muxer, interleaved, without CRC-32 elements; the packets are counted references, never copied.
void WriteWithLibavformat(const PacketLoad& load, const std::string& path);
// libwebm's muxer.
void WriteWithLibwebm(const PacketLoad& load, const std::string& path);
// libmatroska alone: clusters cut by our rules, rendered into one buffer and written at once; no head and no cues.
void WriteWithLibmatroska(const PacketLoad& load, const std::string& path);
// The floor: payloads and block heads gathered in one buffer of a cluster's size, written when it is full.
void GatherAndWrite(const PacketLoad& load, const std::string& path);

inline constexpr Peer kOurs{"ours", WriteWithOurs, true};
inline constexpr Peer kLibavformat{"libavformat", WriteWithLibavformat, true};
inline constexpr Peer kLibwebm{"libwebm", WriteWithLibwebm, true};
inline constexpr Peer kLibmatroska{"libmatroska", WriteWithLibmatroska, false};
inline constexpr Peer kFloor{"floor", GatherAndWrite, false};

} // namespace bench

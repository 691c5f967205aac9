// What the corruption tests of all sources share: reading everything, and what must hold of it whatever the input.
#pragma once

#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "sources/base/packet_reader.h"

namespace test_source {

using Bytes = std::vector<BYTE>;
// The reader for these bytes, or none when they are refused.
using MakeReader = std::function<std::unique_ptr<source::PacketReader>(const Bytes& bytes)>;

[[nodiscard]] std::vector<source::Packet> ReadAll(source::PacketReader& reader);

// Fails the running test when a packet is not one that a muxer can take. The number of packets, or -1 for a refusal.
int CheckReading(const MakeReader& make, const Bytes& bytes);

inline constexpr int kDamagedInputs = 1000;

// The whole input, cut off at kDamagedInputs places. Where the format tells its length, a cut that loses packets must
// be refused or told as damage.
void CheckTruncations(const MakeReader& make, const Bytes& whole, bool tellsItsLength);
// kDamagedInputs times one to eight bits are flipped.
void CheckBitFlips(const MakeReader& make, const Bytes& whole);

} // namespace test_source

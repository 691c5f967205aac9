// Whether a finished file holds the packets of a load, all of them, byte by byte and in each track's order, read by the
// tests' own reader, so that no muxer wins by leaving something out. std::runtime_error when it does not.
#pragma once

#include <string>

#include "bench/native/packet_load.h"

namespace bench {

void CheckFile(const PacketLoad& load, const std::string& path);

} // namespace bench

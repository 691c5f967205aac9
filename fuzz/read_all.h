// What the fuzzers of readers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "sources/base/byte_source.h"
#include "sources/base/packet_reader.h"

namespace fuzz {

[[nodiscard]] std::unique_ptr<source::ByteSource> SourceOf(const std::uint8_t* data, size_t size);

// Reads twice, and ends the program when what a reader promises does not hold, or the packets hold more than the rule
// of SECURITY.md allows for so many bytes. No reader is fine.
void ReadAll(source::PacketReader* reader, size_t size);

} // namespace fuzz

// The raw payload of NAL units, and what the bit reader lacks.
#pragma once

#include <span>
#include <vector>

#include "mkv/bitstream_reader.h"

namespace annexb {

using Bytes = std::span<const BYTE>;

// Without the header of so many bytes, and without the 03 that keeps 00 00 from looking like a start code.
[[nodiscard]] std::vector<BYTE> RawPayload(Bytes unit, size_t headerBytes);

// Signed Exp-Golomb.
[[nodiscard]] INT32 ReadSE(mkv::BitstreamReader& reader);

} // namespace annexb

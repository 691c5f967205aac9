// The raw payload of NAL units, and what the bit reader lacks.
#pragma once

#include <span>

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace annexb {

using Bytes = std::span<const BYTE>;

using mkv::RawPayload;

// Signed Exp-Golomb.
[[nodiscard]] INT32 ReadSE(mkv::BitstreamReader& reader);

} // namespace annexb

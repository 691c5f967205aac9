// The raw payload of NAL units, and what the bit reader lacks.
#pragma once

#include <span>

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"
#include "win/platform.h"

namespace annexb {

using Bytes = codecs::ByteView;

using codecs::RawPayload;

// Signed Exp-Golomb.
[[nodiscard]] INT32 ReadSE(codecs::BitstreamReader& reader);

} // namespace annexb

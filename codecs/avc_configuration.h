// The AVCDecoderConfigurationRecord of ISO/IEC 14496-15, as this muxer writes it.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// units: NAL units, each behind a 2-byte big-endian length; a length of 0, or less than a length, ends them. Only
// parameter sets get into the record. No value when a length points behind the last byte.
[[nodiscard]] std::optional<std::vector<uint8_t>> BuildAvcConfiguration(ByteView units, uint8_t profile, uint8_t level);

} // namespace codecs

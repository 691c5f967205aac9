// The AVCDecoderConfigurationRecord of ISO/IEC 14496-15, as this muxer writes it.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "win/platform.h"

namespace mkv {

// units: NAL units, each behind a 2-byte big-endian length; a length of 0, or less than a length, ends them. Only
// parameter sets get into the record. No value when a length points behind the last byte.
[[nodiscard]] std::optional<std::vector<BYTE>> BuildAvcConfiguration(std::span<const BYTE> units, BYTE profile,
                                                                     BYTE level);

} // namespace mkv

// The HEVCDecoderConfigurationRecord of ISO/IEC 14496-15, as this muxer writes it.
#pragma once

#include <span>
#include <vector>

#include "win/platform.h"

namespace mkv {

// byteStream: the parameter sets with start codes. Without a sequence parameter set, what it would tell is 0.
[[nodiscard]] std::vector<BYTE> BuildHevcConfiguration(std::span<const BYTE> byteStream);

} // namespace mkv

// The HEVCDecoderConfigurationRecord of ISO/IEC 14496-15, as this muxer writes it.
#pragma once

#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// byteStream: the parameter sets with start codes. Without a sequence parameter set, what it would tell is 0.
[[nodiscard]] std::vector<uint8_t> BuildHevcConfiguration(ByteView byteStream);

} // namespace codecs

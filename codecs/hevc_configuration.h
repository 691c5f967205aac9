// The HEVCDecoderConfigurationRecord of ISO/IEC 14496-15, the codec private data of H.265, as this muxer writes it.
//
// Units: bytes; numbers are big-endian. Owner: what is returned is the caller's. Errors: none are reported.
#pragma once

#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// byteStream: the parameter sets with start codes. Without a sequence parameter set, what it would tell is 0; units
// that the record cannot count or measure are left out.
[[nodiscard]] std::vector<uint8_t> BuildHevcConfiguration(ByteView byteStream);

} // namespace codecs

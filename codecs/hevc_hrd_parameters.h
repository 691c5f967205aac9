// The hypothetical reference decoder parameters inside the VUI of an H.265 parameter set (ITU-T H.265, E.2.2).
//
// Errors: a damaged part invalidates the reader.
#pragma once

#include <array>

#include "codecs/bitstream_reader.h"
#include "codecs/hevc_sps.h"

namespace codecs {

// Reads past the parameters; sets fixed_pic_rate_general_flag for the sub-layers 0 to maxSubLayersMinus1.
void ReadHevcHrdParameters(BitstreamReader& reader, unsigned maxSubLayersMinus1,
                           std::array<bool, kHevcMaxSubLayers>& fixedPicRateGeneral);

} // namespace codecs

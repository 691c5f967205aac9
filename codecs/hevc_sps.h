// What is taken from an H.265 sequence parameter set (ITU-T H.265, 7.3.2.2): its head, and the few fields behind it
// that the decoder configuration record and the track want.
//
// unit: the whole NAL unit, header included and with its emulation prevention bytes.
#pragma once

#include <array>

#include "codecs/hevc_sps_head.h"
#include "codecs/video_signal.h"

namespace codecs {

struct HevcSps : HevcSpsHead {
    VideoSignal signal;
    uint32_t minSpatialSegmentationIdc = 0;
    // By sub-layer, from the HRD parameters of the VUI.
    std::array<bool, kHevcMaxSubLayers> fixedPicRateGeneral{};
};

// Errors: none are reported. What a damaged or cut-off parameter set does not tell stays 0.
[[nodiscard]] HevcSps ParseHevcSps(ByteView unit);

} // namespace codecs

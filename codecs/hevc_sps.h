// HevcSps: what the decoder configuration record takes from an H.265 sequence parameter set (ITU-T H.265, 7.3.2.2).
//
// Errors: none are reported. What a damaged or cut-off parameter set does not tell stays 0.
#pragma once

#include <array>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr size_t kHevcMaxSubLayers = 8;

struct HevcSps {
    uint8_t generalProfileSpace = 0;
    uint8_t generalTierFlag = 0;
    uint8_t generalProfileIdc = 0;
    uint32_t generalProfileCompatibilityFlags = 0; // the first flag is the most significant bit
    uint64_t generalConstraintFlags = 0;           // 48 bits, the progressive source flag is the most significant
    uint8_t generalLevelIdc = 0;
    uint32_t chromaFormatIdc = 0;
    uint32_t bitDepthLumaMinus8 = 0;
    uint32_t bitDepthChromaMinus8 = 0;
    uint8_t maxSubLayersMinus1 = 0;
    bool temporalIdNesting = false;
    uint32_t minSpatialSegmentationIdc = 0;
    // By sub-layer, from the HRD parameters of the VUI.
    std::array<bool, kHevcMaxSubLayers> fixedPicRateGeneral{};
};

// unit: the whole NAL unit, header included and with its emulation prevention bytes.
[[nodiscard]] HevcSps ParseHevcSps(ByteView unit);

} // namespace codecs

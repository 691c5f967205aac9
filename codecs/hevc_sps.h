// HevcSps: what the decoder configuration record takes from an H.265 sequence parameter set (ITU-T H.265, 7.3.2.2).
//
// Errors: none are reported. What a damaged or cut-off parameter set does not tell stays 0.
#pragma once

#include <array>
#include <span>

#include "win/platform.h"

namespace mkv {

inline constexpr size_t kHevcMaxSubLayers = 8;

struct HevcSps {
    BYTE generalProfileSpace = 0;
    BYTE generalTierFlag = 0;
    BYTE generalProfileIdc = 0;
    UINT32 generalProfileCompatibilityFlags = 0; // the first flag is the most significant bit
    UINT64 generalConstraintFlags = 0;           // 48 bits, the progressive source flag is the most significant
    BYTE generalLevelIdc = 0;
    UINT32 chromaFormatIdc = 0;
    UINT32 bitDepthLumaMinus8 = 0;
    UINT32 bitDepthChromaMinus8 = 0;
    BYTE maxSubLayersMinus1 = 0;
    bool temporalIdNesting = false;
    UINT32 minSpatialSegmentationIdc = 0;
    // By sub-layer, from the HRD parameters of the VUI.
    std::array<bool, kHevcMaxSubLayers> fixedPicRateGeneral{};
};

// unit: the whole NAL unit, header included and with its emulation prevention bytes.
[[nodiscard]] HevcSps ParseHevcSps(std::span<const BYTE> unit);

} // namespace mkv

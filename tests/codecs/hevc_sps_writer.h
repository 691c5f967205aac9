// Writes H.265 sequence parameter sets of any shape (ITU-T H.265, 7.3.2.2), so that every branch of a parser can be
// taken. What it writes was read back once with ffmpeg's trace_headers filter, field by field.
#pragma once

#include <optional>
#include <vector>

#include "tests/codecs/bit_writer.h"
#include "win/platform.h"

namespace mkv_test {

struct SubLayerPresence {
    bool profile = false;
    bool level = false;
};

enum class ScalingLists { Off, Default, Coded };

struct ShortTermSet {
    // Coded sets.
    std::vector<UINT32> negativeMinus1;
    std::vector<UINT32> positiveMinus1;
    // Predicted sets: how the set before is shifted, and for each of its entries plus one the flags as written:
    // 1 used, 01 kept without use, 00 dropped.
    bool isPredicted = false;
    bool isNegative = false;
    UINT32 absDeltaMinus1 = 0;
    std::vector<const char*> flags{};
};

struct HrdSubLayer {
    bool isFixedGeneral = false;
    bool isFixedWithinSequence = false;
    bool isLowDelay = false;
    UINT32 buffersMinus1 = 0;
};

struct Hrd {
    bool hasNal = false;
    bool hasVcl = false;
    bool hasSubPicture = false;
    std::vector<HrdSubLayer> subLayers; // one for each sub-layer
};

struct Vui {
    std::optional<BYTE> aspectRatioIdc;
    bool hasOverscan = false;
    bool hasVideoSignal = false;
    bool hasColour = false;
    bool hasChromaLocation = false;
    bool hasDisplayWindow = false;
    bool hasTiming = false;
    bool hasPocProportional = false;
    std::optional<Hrd> hrd; // only with timing
    std::optional<UINT32> minSpatialSegmentationIdc;
};

struct HevcSpsShape {
    unsigned maxSubLayersMinus1 = 0;
    bool temporalIdNesting = true;
    BYTE profileSpace = 0;
    bool tier = false;
    BYTE profileIdc = 1;
    UINT32 compatibilityFlags = 0x60000000;
    UINT64 constraintFlags = 0x900000000000; // 48 bits
    BYTE level = 93;
    std::vector<SubLayerPresence> subLayers{}; // missing ones have neither
    UINT32 chromaFormatIdc = 1;
    bool hasConformanceWindow = false;
    UINT32 bitDepthLumaMinus8 = 0;
    UINT32 bitDepthChromaMinus8 = 0;
    UINT32 log2MaxPocLsbMinus4 = 4;
    bool hasOrderingForEachSubLayer = false;
    ScalingLists scalingLists = ScalingLists::Off;
    bool hasPcm = false;
    std::vector<ShortTermSet> shortTermSets{};
    UINT32 longTermPictures = 0;
    std::optional<Vui> vui{};
};

// The parameter set's bits, without header and emulation prevention.
[[nodiscard]] BitWriter WriteHevcSpsBits(const HevcSpsShape& shape);
// The whole NAL unit.
[[nodiscard]] std::vector<BYTE> WriteHevcSps(const HevcSpsShape& shape);
// A NAL unit around the given payload bytes, with emulation prevention.
[[nodiscard]] std::vector<BYTE> WrapHevcSps(const std::vector<BYTE>& payload);

} // namespace mkv_test

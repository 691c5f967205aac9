// Writes H.265 sequence parameter sets of any shape (ITU-T H.265, 7.3.2.2), so that every branch of a parser can be
// taken. What it writes was read back once with ffmpeg's trace_headers filter, field by field.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "tests/codecs/bit_writer.h"
#include "tests/codecs/video_signal_writer.h"

namespace mkv_test {

struct SubLayerPresence {
    bool profile = false;
    bool level = false;
};

enum class ScalingLists { Off, Default, Coded };

struct ShortTermSet {
    // Coded sets.
    std::vector<uint32_t> negativeMinus1;
    std::vector<uint32_t> positiveMinus1;
    // Predicted sets: how the set before is shifted, and for each of its entries plus one the flags as written:
    // 1 used, 01 kept without use, 00 dropped.
    bool isPredicted = false;
    bool isNegative = false;
    uint32_t absDeltaMinus1 = 0;
    std::vector<const char*> flags{};
};

struct HrdSubLayer {
    bool isFixedGeneral = false;
    bool isFixedWithinSequence = false;
    bool isLowDelay = false;
    uint32_t buffersMinus1 = 0;
};

struct Hrd {
    bool hasNal = false;
    bool hasVcl = false;
    bool hasSubPicture = false;
    std::vector<HrdSubLayer> subLayers; // one for each sub-layer
};

struct Vui {
    std::optional<uint8_t> aspectRatioIdc;
    SignalShape signal{};
    bool hasDisplayWindow = false;
    bool hasTiming = false;
    bool hasPocProportional = false;
    std::optional<Hrd> hrd; // only with timing
    std::optional<uint32_t> minSpatialSegmentationIdc;
};

struct HevcSpsShape {
    unsigned maxSubLayersMinus1 = 0;
    bool temporalIdNesting = true;
    uint8_t profileSpace = 0;
    bool tier = false;
    uint8_t profileIdc = 1;
    uint32_t compatibilityFlags = 0x60000000;
    uint64_t constraintFlags = 0x900000000000; // 48 bits
    uint8_t level = 93;
    std::vector<SubLayerPresence> subLayers{}; // missing ones have neither
    uint32_t chromaFormatIdc = 1;
    bool hasConformanceWindow = false;
    uint32_t bitDepthLumaMinus8 = 0;
    uint32_t bitDepthChromaMinus8 = 0;
    uint32_t log2MaxPocLsbMinus4 = 4;
    bool hasOrderingForEachSubLayer = false;
    ScalingLists scalingLists = ScalingLists::Off;
    bool hasPcm = false;
    std::vector<ShortTermSet> shortTermSets{};
    uint32_t longTermPictures = 0;
    std::optional<Vui> vui{};
};

// The parameter set's bits, without header and emulation prevention.
[[nodiscard]] BitWriter WriteHevcSpsBits(const HevcSpsShape& shape);
// The whole NAL unit.
[[nodiscard]] std::vector<uint8_t> WriteHevcSps(const HevcSpsShape& shape);
// A NAL unit around the given payload bytes, with emulation prevention.
[[nodiscard]] std::vector<uint8_t> WrapHevcSps(const std::vector<uint8_t>& payload);

} // namespace mkv_test

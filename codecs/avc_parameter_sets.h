// What indexing and ordering pictures needs of the H.264 parameter sets (ITU-T H.264, 7.3.2).
//
// Units: bits for the lengths of numbers. Errors: none for a set that is damaged.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"
#include "codecs/picture_shape.h"
#include "codecs/video_signal.h"

namespace codecs {

inline constexpr uint32_t kAvcMaxPpsId = 255;
inline constexpr uint32_t kAvcMaxRefIdx = 31;

// In the order of the bits, up to the bit depths.
struct AvcSpsHead {
    uint8_t profile = 0;
    uint8_t compatibility = 0; // the constraint flags and the reserved bits behind them
    uint8_t level = 0;
    uint32_t id = 0;
    uint32_t chromaFormatIdc = 1;
    bool separateColourPlanes = false;
    uint32_t bitDepthLumaMinus8 = 0;
    uint32_t bitDepthChromaMinus8 = 0;
};

struct AvcSps : AvcSpsHead {
    bool isMonochrome = false;
    unsigned frameNumBits = 4;
    uint32_t pocType = 0;
    unsigned pocLsbBits = 4;
    bool deltaPicOrderAlwaysZero = false;
    int32_t offsetForNonRefPic = 0;
    int32_t offsetForTopToBottomField = 0;
    std::vector<int32_t> offsetsForRefFrame;
    bool frameMbsOnly = true;
    PictureShape shape;
    VideoSignal signal;
};

struct AvcPps {
    uint32_t id = 0;
    uint32_t spsId = 0;
    bool bottomFieldPicOrderPresent = false;
    uint32_t refIdxDefault[2] = {1, 1}; // entries of the reference lists
    bool weightedPrediction = false;
    uint32_t weightedBiprediction = 0;
    bool redundantPicCntPresent = false;
};

// unit: the whole NAL unit, header included and with its emulation prevention bytes.
[[nodiscard]] std::optional<AvcSpsHead> ParseAvcSpsHead(ByteView unit); // bit depths of up to 14
[[nodiscard]] std::optional<AvcSps> ParseAvcSps(ByteView unit);
[[nodiscard]] std::optional<AvcPps> ParseAvcPps(ByteView unit);

} // namespace codecs

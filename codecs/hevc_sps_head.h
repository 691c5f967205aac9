// The head of an H.265 sequence parameter set (ITU-T H.265, 7.3.2.2), which tells how pictures look and are counted.
//
// unit: the whole NAL unit, header included and with its emulation prevention bytes.
#pragma once

#include <array>
#include <optional>

#include "codecs/bitstream_reader.h"
#include "codecs/picture_shape.h"

namespace codecs {

inline constexpr size_t kHevcMaxSubLayers = 8;
inline constexpr uint32_t kHevcMaxSpsId = 15;

// In the order of the bits, up to log2_max_pic_order_cnt_lsb_minus4.
struct HevcSpsHead {
    uint8_t maxSubLayersMinus1 = 0;
    bool temporalIdNesting = false;
    uint8_t generalProfileSpace = 0;
    uint8_t generalTierFlag = 0;
    uint8_t generalProfileIdc = 0;
    uint32_t generalProfileCompatibilityFlags = 0; // the first flag is the most significant bit
    uint64_t generalConstraintFlags = 0;           // 48 bits, the progressive source flag is the most significant
    uint8_t generalLevelIdc = 0;
    uint32_t id = 0;
    uint32_t chromaFormatIdc = 0;
    bool separateColourPlanes = false;
    uint32_t codedWidth = 0; // in pixels
    uint32_t codedHeight = 0;
    std::array<uint32_t, 4> conformanceWindow{}; // left, right, top, bottom; in samples of the chroma format
    uint32_t bitDepthLumaMinus8 = 0;
    uint32_t bitDepthChromaMinus8 = 0;
    unsigned pocLsbBits = 4;

    // Of pixels that are square. Only of a head whose numbers are in range.
    [[nodiscard]] PictureShape Shape() const;
};

// Leaves the reader behind the head. What is out of range stays as it is, what is not there is 0.
[[nodiscard]] HevcSpsHead ReadHevcSpsHead(BitstreamReader& reader);

// Errors: none for a head that is cut off, or whose numbers are out of range: pictures cannot be told by it.
[[nodiscard]] std::optional<HevcSpsHead> ParseHevcSpsHead(ByteView unit);

} // namespace codecs

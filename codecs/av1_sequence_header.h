// What an AV1 sequence header says (AV1 specification, 5.5), as far as containers tell it.
//
// Units: pixels, bits, fractions of a second as told.
#pragma once

#include <optional>

#include "codecs/byte_view.h"

namespace codecs {

// color_config. The numbers of the colours are those of ITU-T H.273, 2 where they are not told.
struct Av1Color {
    uint8_t bitDepth = 8;
    bool isMonochrome = false;
    bool isDescribed = false; // color_description_present_flag
    uint8_t primaries = 2;
    uint8_t transferCharacteristics = 2;
    uint8_t matrixCoefficients = 2;
    bool isFullRange = false;
    bool subsamplingX = true;
    bool subsamplingY = true;
    uint8_t chromaSamplePosition = 0; // 0 unknown, 1 vertical (left), 2 colocated (top left)
};

struct Av1SequenceHeader {
    uint8_t profile = 0;
    uint8_t level = 0; // of the first operating point, as is the tier
    uint8_t tier = 0;
    bool isStillPicture = false;
    bool isReduced = false; // reduced_still_picture_header
    uint32_t maxWidth = 0;
    uint32_t maxHeight = 0;
    // Of a frame, when all last as long; ticks are 0 when it is not told.
    uint64_t frameTicks = 0;
    uint32_t ticksPerSecond = 0;
    Av1Color color;
};

// The payload of the unit. None when it ends too early, or has what is reserved.
[[nodiscard]] std::optional<Av1SequenceHeader> ParseAv1SequenceHeader(ByteView payload);

// The first one among units, such as those of a temporal unit, and configuration records (av1C). None where there is
// none that can be read.
[[nodiscard]] std::optional<Av1SequenceHeader> FindAv1SequenceHeader(ByteView bytes);

} // namespace codecs

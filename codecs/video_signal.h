// VideoSignal: how the numbers of a picture are colours, as the VUI of H.264 and H.265 tells it alike (ITU-T H.264,
// E.1.1, and H.265, E.2.1). The values are those of ISO/IEC 23091-2.
#pragma once

#include <optional>

#include "codecs/bitstream_reader.h"

namespace codecs {

inline constexpr uint8_t kUnspecifiedColour = 2;

struct VideoSignal {
    uint8_t primaries = kUnspecifiedColour;
    uint8_t transfer = kUnspecifiedColour;
    uint8_t matrix = kUnspecifiedColour;
    std::optional<bool> isFullRange{};
    std::optional<uint8_t> chromaLocation{}; // of the top field: 0 left, 1 centre, 2 top left, 3 top, 4 and 5 bottom

    bool operator==(const VideoSignal&) const = default;
};

// From overscan_info_present_flag to the chroma locations. Nothing is told by a VUI that ends before.
[[nodiscard]] VideoSignal ReadVideoSignal(BitstreamReader& reader);

} // namespace codecs

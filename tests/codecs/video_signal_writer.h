// Writes what the VUI of H.264 and H.265 tells of colours, from overscan_info_present_flag to the chroma locations.
#pragma once

#include <optional>

#include "tests/codecs/bit_writer.h"

namespace mkv_test {

struct SignalShape {
    bool hasOverscan = false;
    std::optional<bool> fullRange{};   // none: nothing of the video signal
    std::optional<uint32_t> colours{}; // primaries, transfer and matrix, a byte each; with the range alone
    std::optional<uint32_t> chromaLocation{};
};

inline void WriteSignal(BitWriter& bits, const SignalShape& signal) {
    bits.Flag(signal.hasOverscan).Bits(1, signal.hasOverscan ? 1 : 0);
    bits.Flag(signal.fullRange.has_value());
    if (signal.fullRange) {
        bits.Bits(5, 3).Flag(*signal.fullRange).Flag(signal.colours.has_value());
        bits.Bits(signal.colours.value_or(0), signal.colours ? 24 : 0);
    }
    bits.Flag(signal.chromaLocation.has_value()).UEs(signal.chromaLocation.value_or(0), signal.chromaLocation ? 2 : 0);
}

} // namespace mkv_test

// The identification header of Opus (RFC 7845, 5.1), the codec private data of its tracks.
//
// Units: samples at 48 kHz. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr uint32_t kOpusRateHz = 48000; // of all that it decodes to

struct OpusHead {
    uint8_t channels = 0;
    uint16_t preSkip = 0; // what the decoder drops at the start
};

// None for anything but a whole header of a version that is known.
[[nodiscard]] std::optional<OpusHead> ParseOpusHead(ByteView bytes);

// For a stream that brings none, whose start is not known. None for more than two channels: nothing tells how they are
// coupled.
[[nodiscard]] std::optional<std::vector<uint8_t>> MakeOpusHead(uint32_t channels, uint32_t inputRateHz);

} // namespace codecs

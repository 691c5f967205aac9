// The configuration ("magic cookie") of ALAC: 24 bytes, and possibly a channel layout behind them. QuickTime and some
// splitters put it into atoms, Matroska has it bare.
#pragma once

#include <cstdint>
#include <optional>

#include "codecs/byte_view.h"

namespace codecs {

struct AlacConfig {
    std::uint32_t bitDepth = 0;
    std::uint32_t channels = 0;
    std::uint32_t rateHz = 0;
};

// What lies inside the atoms, if there are any. A view of the cookie.
[[nodiscard]] ByteView BareAlacCookie(ByteView cookie);

// Of a bare cookie. None for less than a whole one, and for one that nobody can decode by.
[[nodiscard]] std::optional<AlacConfig> ParseAlacConfig(ByteView cookie);

} // namespace codecs

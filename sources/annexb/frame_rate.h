// FrameRate: pictures in a second, as the fraction that broadcasters mean.
#pragma once

#include <optional>
#include <string_view>

#include "win/platform.h"

namespace annexb {

struct FrameRate {
    UINT32 pictures = 25;
    UINT32 seconds = 1;

    // Of the picture that is shown after so many others, in 100 ns.
    [[nodiscard]] REFERENCE_TIME TimeOf(UINT64 picture) const;
};

// "25", "29.97", "30000/1001"; decimals close to a thousand-and-first part stand for it. None for what is no rate
// between 1/1000 and 10000.
[[nodiscard]] std::optional<FrameRate> ParseFrameRate(std::string_view text);

} // namespace annexb

// Times as subtitle files write them.
//
// Units: 100 ns.
#pragma once

#include <optional>
#include <string_view>

#include "win/platform.h"

namespace subtitles {

// Between the two times of a cue, in SubRip and WebVTT.
inline constexpr std::string_view kTimingArrow = "-->";

// "-1:02:03,45": the fraction has as many digits as the text gives it. None for another shape.
[[nodiscard]] std::optional<REFERENCE_TIME> ParseTime(std::string_view text);

} // namespace subtitles

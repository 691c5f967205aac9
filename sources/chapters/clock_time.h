// ParseClockTime: points in time as chapter files write them.
//
// Units: 100 ns; what is finer is cut off. Errors: none for a text that is no such time, or one later than any file.
#pragma once

#include <optional>
#include <string_view>

#include "win/platform.h"

namespace chapters {

// "00:01:02.5", "01:02,5"; a number with a unit: "62.5s", "62500ms", "1us", "1ns".
[[nodiscard]] std::optional<REFERENCE_TIME> ParseClockTime(std::string_view text);

} // namespace chapters

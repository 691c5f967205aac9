// Text in the platform's UTF-16, spelled so that the same source compiles on Windows (WCHAR is wchar_t) and on
// Linux against Wine's headers (WCHAR is char16_t). Literals are written OLESTR("…").
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "win/platform.h"

using WideString = std::basic_string<WCHAR>;
using WideStringView = std::basic_string_view<WCHAR>;

// Decimal digits of a number; signed numbers with a leading '-' where needed.
template <typename Integer>
[[nodiscard]] WideString ToWideDecimal(Integer value) {
    const std::string digits = std::to_string(value);
    return WideString(digits.begin(), digits.end());
}

// Numbers and bytes as text that is the same on every platform.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace test_support {

// The shortest decimal text that gives the number back.
[[nodiscard]] std::string FormatDouble(double value);
[[nodiscard]] std::string FormatHex(std::span<const uint8_t> bytes);
[[nodiscard]] std::string FormatHex32(uint32_t value); // eight digits
// In double quotes; what is not printable ASCII as \xNN.
[[nodiscard]] std::string Quote(std::string_view text);

} // namespace test_support

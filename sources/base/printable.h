// Texts from inputs, made fit for a line of a console.
#pragma once

#include <string>
#include <string_view>

namespace source {

inline constexpr size_t kMaxShownChars = 200;

// On one line: control characters, those that turn the direction of writing or break lines, and what is no UTF-8 become
// question marks; what is longer than that many characters ends in three dots.
[[nodiscard]] std::string Printable(std::string_view utf8, size_t most = kMaxShownChars);

} // namespace source

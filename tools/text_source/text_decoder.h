// From the bytes of a text file to UTF-8.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "win/platform.h"

namespace subtitles {

// UTF-8 and UTF-16 by their byte order marks, UTF-8 without one if it is valid, else Windows-1252. What cannot be
// decoded becomes U+FFFD.
[[nodiscard]] std::string DecodeText(std::span<const BYTE> bytes);

// The lines without their ends, whichever kind those are of.
[[nodiscard]] std::vector<std::string> SplitLines(const std::string& text);

// Without spaces, tabs and the like at both ends.
[[nodiscard]] std::string Trimmed(const std::string& text);

} // namespace subtitles

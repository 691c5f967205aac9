// From the bytes of a text file to UTF-8.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "win/platform.h"

namespace subtitles {

// UTF-8 and UTF-16 by their byte order marks, UTF-8 without one if it is valid, else Windows-1252. What cannot be
// decoded becomes U+FFFD. It stops soon after that many bytes of text.
[[nodiscard]] std::string DecodeText(std::span<const BYTE> bytes, size_t most = SIZE_MAX);

// Takes the lines of a text one by one, without their ends, whichever kind those are of. The text must outlive it: a
// file of nothing but line ends would need thirty times its size otherwise.
class LineReader {
  public:
    explicit LineReader(std::string_view text) : m_rest(text) {}

    // None at the end.
    [[nodiscard]] std::optional<std::string_view> Next();

  private:
    std::string_view m_rest;
};

// Without spaces, tabs and the like at both ends.
[[nodiscard]] std::string_view Trimmed(std::string_view text);

} // namespace subtitles

// Texts of a page: what comes from the file is made harmless, and numbers are made readable.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

#include "win/platform.h"

namespace report {

// UTF-8 that is plain text wherever it stands in the page, quoted attributes included. A long one ends in dots.
[[nodiscard]] std::string Escaped(std::string_view text);

// "1.2 MB", with the powers of ten that disks are sold by.
[[nodiscard]] std::string BytesText(UINT64 bytes);
// "1 234 567", in groups of three.
[[nodiscard]] std::string CountText(UINT64 number);
// "1:02:03.456"
[[nodiscard]] std::string TimeText(UINT64 ns);
// "1.2 Mbit/s"
[[nodiscard]] std::string RateText(double bitsPerSecond);
// A date of Matroska, in nanoseconds from 2001: "2026-11-22 18:57:20 UTC".
[[nodiscard]] std::string DateText(INT64 ns);
// With so many digits behind the point.
[[nodiscard]] std::string Fixed(double number, int digits = 1);

} // namespace report

// Between the platform's UTF-16 and UTF-8.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

#include "win/wide_string.h"

namespace win {

// Ours, not the system's: what goes into a file is the same on every system. A surrogate without its partner becomes
// U+FFFD, and nothing after it is lost.
[[nodiscard]] std::string Utf8FromWide(WideStringView text);
// The system's. What is no UTF-8 becomes U+FFFD.
[[nodiscard]] WideString WideFromUtf8(std::string_view text);

} // namespace win

// Text between the platform's UTF-16 and a code page of the system: CP_THREAD_ACP for what was written for the user's
// own language, CP_UTF8 for what others wrote.
//
// Threads: any. Errors: empty for a text that cannot be converted or is longer than a billion characters;
// std::bad_alloc. What the other side has no character for becomes the system's substitute.
#pragma once

#include <string>
#include <string_view>

#include "win/wide_string.h"

namespace win {

[[nodiscard]] std::string NarrowFromWide(UINT codePage, WideStringView text);
[[nodiscard]] WideString WideFromNarrow(UINT codePage, std::string_view text);

} // namespace win

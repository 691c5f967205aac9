// From the platform's UTF-16 to UTF-8, as the file's texts are written.
#pragma once

#include <string>

#include "win/wide_string.h"

namespace mkv {

// A surrogate without its partner becomes U+FFFD, and nothing after it is lost.
[[nodiscard]] std::string ToUtf8(WideStringView text);

} // namespace mkv

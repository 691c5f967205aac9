// Standard output as the place of the file that a run writes.
#pragma once

#include "win/handle.h"

namespace mkvmux {

// What the command line calls it, and messages.
inline constexpr wchar_t kStandardOutput[] = L"-";
inline constexpr const char* kStandardOutputName = "standard output";

// From here on all that the program says goes to standard error, and nothing but the file's bytes into what is
// answered. Throws Failure when there is no standard output, or when it is a console, whose user would see bytes.
[[nodiscard]] win::FileHandle TakeStandardOutput();

} // namespace mkvmux

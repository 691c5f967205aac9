// What the program answers to its caller.
#pragma once

namespace mkvmux {

inline constexpr int kExitDone = 0;
inline constexpr int kExitDoneWithWarnings = 1;
inline constexpr int kExitFailed = 2;

} // namespace mkvmux

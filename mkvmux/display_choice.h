// How progress is shown, by the options and by where it is shown.
#pragma once

#include "mkvmux/options.h"
#include "mkvmux/progress_display.h"

namespace mkvmux {

[[nodiscard]] ProgressDisplay MakeDisplay(const Options& options);

} // namespace mkvmux

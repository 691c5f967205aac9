// How progress is shown, by the options and by where it is shown.
#pragma once

#include "mkvmux/options.h"
#include "mkvmux/progress_display.h"
#include "mkvmux/status_display.h"

namespace mkvmux {

[[nodiscard]] ProgressDisplay MakeDisplay(const Options& options);
// Of what is going on, when it was asked for. On a terminal it has the progress in its line.
[[nodiscard]] StatusDisplay MakeStatusDisplay(const Options& options);

} // namespace mkvmux

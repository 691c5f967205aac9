// ReportJob: a page about a Matroska file.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/interruption.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Says on the console what was done, and where damage begins. Throws Failure, which leaves no page.
void Report(const Options& options, Interruption& interruption, Console& console);

} // namespace mkvmux

// RepairJob: a recording that was cut off is finished in place.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/interruption.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Says on the console what was done. Throws Failure, which leaves the file as it was unless writing it failed.
void Repair(const Options& options, Interruption& interruption, Console& console);

} // namespace mkvmux

// MuxJob: from the options to the finished file.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/interruption.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Muxes the inputs into the output and says on the console how it goes. Throws Failure.
void Mux(const Options& options, Interruption& interruption, Console& console);

} // namespace mkvmux

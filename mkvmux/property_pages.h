// The muxer's property pages, for the user to set what the command line did not.
#pragma once

#include "win/platform.h"

namespace mkvmux {

// Shows them in the system's property frame until the user closes it. The pages come from the module that made the
// filter, registered or not. Throws Failure.
void ShowPropertyPages(IBaseFilter* muxer);

} // namespace mkvmux

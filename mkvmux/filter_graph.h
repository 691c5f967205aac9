// CreateFilterGraph: a graph of the system's that runs as fast as its filters can.
#pragma once

#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

// Throws Failure.
[[nodiscard]] win::ComPtr<IGraphBuilder> CreateFilterGraph();

} // namespace mkvmux

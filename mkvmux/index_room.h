// How much room a run keeps for the index in front of the clusters.
#pragma once

#include <qrx_mkvmuxer.h>

#include "mkvmux/mux_graph.h"
#include "mkvmux/options.h"

namespace mkvmux {

// The bytes that the options say, or as long as the longest input; of inputs that do not know, by the size of the
// files.
[[nodiscard]] MuxReservedIndex IndexRoomFor(const MuxGraph& graph, const Options& options);

} // namespace mkvmux

// LanguageCheck: tells the user of tracks whose language readers of the file will not know.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/muxer_settings.h"

namespace mkvmux {

// Of the tracks that are written, as the muxer is told them now. Names that a configuration brings from a system of
// another code page are spelt for this one.
void CheckLanguages(const MuxGraph& graph, MuxerSettings& settings, Console& console);

} // namespace mkvmux

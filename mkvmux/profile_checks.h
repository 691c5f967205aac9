// ProfileChecks: what the user should know of the profile before the output is opened.
//
// Errors: Failure, one line that names the track.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Of options that strict files alone have anything of; in one line.
void WarnOfOptionsWithoutEffect(const Options& options, const MuxerSettings& settings, Console& console);

// Throws Failure for a strict WebM file that would hold what WebM does not have.
void CheckWebmSubset(const MuxGraph& graph, const MuxerSettings& settings);

} // namespace mkvmux

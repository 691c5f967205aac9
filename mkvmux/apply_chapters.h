// ApplyChapters: brings the chapters and the tags of the whole file into the muxer: those that the options name, else
// those of the inputs. A loaded configuration has its own, which the options alone replace.
//
// Errors: Failure; what the muxer does not take of the inputs is a warning.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/options.h"

namespace mkvmux {

void ApplyChapters(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console);
void ApplyGlobalTags(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console);

} // namespace mkvmux

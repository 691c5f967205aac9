// ApplySettings: brings what the inputs and the options say of tracks, title and attachments into the muxer.
//
// Errors: Failure; a track number that no input has, or that the muxer has no settings for, is a warning.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Throws Failure when no track is left to be written.
void ApplyTrackSettings(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console);

// The title that was asked for, or that of the inputs for a strict file. Throws Failure for one that is too long.
void ApplyTitle(const MuxGraph& graph, const Options& options, MuxerSettings& settings, Console& console);

// Those of the inputs, unless a loaded configuration said what to attach.
void CarryAttachments(const MuxGraph& graph, const Options& options, MuxerSettings& settings);

// Reads each file whole. Throws Failure for one that cannot be read, is empty, or is too large.
void AttachFiles(const Options& options, MuxerSettings& settings);

} // namespace mkvmux

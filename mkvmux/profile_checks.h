// ProfileChecks: what the user should know of the profile before the output is opened.
#pragma once

#include "mkvmux/console.h"
#include "mkvmux/muxer_settings.h"
#include "mkvmux/options.h"

namespace mkvmux {

// Of options that strict files alone have anything of; in one line.
void WarnOfOptionsWithoutEffect(const Options& options, const MuxerSettings& settings, Console& console);

} // namespace mkvmux

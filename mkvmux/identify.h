// Identify: lists the streams of the inputs with their media types and the codec that each would get in the file.
#pragma once

#include <string>

#include "mkvmux/options.h"
#include "mkvmux/source_streams.h"

namespace mkvmux {

// As text or, when the options ask for it, as JSON. Writes nothing. Throws Failure for an input that cannot be opened
// or split.
[[nodiscard]] std::string Identify(const Options& options);

// "video 'cvid', 160x120, 25 fps: V_MS/VFW/FOURCC", or why the stream cannot be written.
[[nodiscard]] std::string DescribeStream(const SourceStream& stream, bool isStrict);

} // namespace mkvmux

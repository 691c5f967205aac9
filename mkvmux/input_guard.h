// Keeps what a run reads from being written by the same run.
#pragma once

#include "mkvmux/options.h"

namespace mkvmux {

// Looks at every file that the options have written: the output, the saved configuration, the trace log. None may be a
// file that is read (inputs, attachments, the loaded configuration, files with options), whatever name it goes by, nor
// exist when nothing may be overwritten; the log, which grows, may. Throws Failure.
void CheckWrittenFiles(const Options& options);

// Nor may a part of "--split", whichever number it has. The output is the pattern of their names.
void CheckParts(const Options& options);

} // namespace mkvmux

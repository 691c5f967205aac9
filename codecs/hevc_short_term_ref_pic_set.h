// The short-term reference picture sets of an H.265 sequence parameter set (ITU-T H.265, 7.3.7 and 7.4.8).
//
// Errors: a damaged set invalidates the reader.
#pragma once

#include "codecs/bitstream_reader.h"

namespace codecs {

// Reads past the sets. Their contents matter, since a set may be predicted from the one before it, and its length in
// bits then depends on that one's entries.
void SkipHevcShortTermRefPicSets(BitstreamReader& reader, uint32_t count);

} // namespace codecs

// What AV1 tells of its colours, in the sequence header and in metadata units (AV1 specification, 5.5.2, 5.8.3 and
// 5.8.4), in the words of StreamColour.
#pragma once

#include "codecs/stream_colour.h"

namespace codecs {

// Of a configuration record, of units, or of a temporal unit up to its first frame. Damaged units tell nothing.
[[nodiscard]] StreamColour Av1ColourOf(ByteView bytes);

} // namespace codecs

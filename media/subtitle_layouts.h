// Layouts of text and subtitle types.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kTextLayout;           // no block counts
extern const CodecLayout kOneWaySubtitleLayout; // the same, but no track comes back
extern const CodecLayout kSubtitleInfoLayout;   // SUBTITLEINFO, and the codec's header behind it

} // namespace media

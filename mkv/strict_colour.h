// From what is known of a track's colours to its Colour element, and its Dolby Vision configuration.
//
// Errors: std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

#include "media/colour.h"

namespace libmatroska {
class KaxTrackEntry;
class KaxVideoColour;
} // namespace libmatroska

namespace mkv {

// What the record tells and Matroska has a meaning for.
[[nodiscard]] media::Colour ToldColour(const MuxTrackColour& record);

void FillColour(libmatroska::KaxVideoColour& element, const media::Colour& colour);

// Nothing for a stream that is none.
void AddDolbyVision(libmatroska::KaxTrackEntry& entry, const MuxTrackColour& record);

} // namespace mkv

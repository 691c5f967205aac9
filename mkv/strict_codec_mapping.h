// From a codec's strict description to the codec-specific part of a track entry: CodecPrivate, delays, the Video or
// Audio element. What is told is written, also where readers would take it for granted; what is not told is left out.
//
// Errors: std::bad_alloc.
#pragma once

#include "media/codec_description.h"

namespace libmatroska {
class KaxTrackEntry;
}

namespace mkv {

// WebM lacks some of the elements; they are left out there.
void FillStrictCodec(libmatroska::KaxTrackEntry& entry, const media::CodecDescription& description, bool isWebm);

} // namespace mkv

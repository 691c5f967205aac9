// From a media type to the codec-specific part of a track entry: CodecPrivate, the Video or Audio element, the
// default duration and the lacing flag.
#pragma once

#include <string>

#include "win/platform.h"

namespace libmatroska {
class KaxTrackEntry;
}

namespace mkv {

// The Matroska track type of the major type. Throws kUnsupportedTypeError.
[[nodiscard]] INT32 TrackTypeOf(const AM_MEDIA_TYPE& type);

// Fills the entry and returns the codec identifier for KaxCodecID; empty when the type has no mapping, and the
// entry is then of no use.
[[nodiscard]] std::string MapCodec(const AM_MEDIA_TYPE& type, libmatroska::KaxTrackEntry& entry);

} // namespace mkv

// The fields of a track entry that do not depend on the codec, around those that do.
#pragma once

#include <matroska/KaxTracks.h>

#include "mkv/writer_input.h"

namespace mkv {

// Fills the entry; number counts from 1. Throws kUnsupportedTypeError, kUnsupportedCodecError.
void FillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track);

} // namespace mkv

// The fields of a track entry that do not depend on the codec, around those that do.
#pragma once

#include <matroska/KaxTracks.h>

#include "mkv/mkv_track.h"

namespace mkv {

// The code of the language as the file has it: looked up by its English name as the ANSI code page spells it, empty for
// a name that is not known or is absent.
[[nodiscard]] std::string LanguageCodeOf(const TrackSettings& settings);

// Fills the entry; number counts from 1. Throws kUnsupportedTypeError, kUnsupportedCodecError.
void FillTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const MkvTrack& track);

} // namespace mkv

// A track entry as RFC 9559 and the WebM guidelines ask: every flag its own, one code a language, unique identifiers.
#pragma once

#include <matroska/KaxTracks.h>

#include "mkv/identifiers.h"
#include "mkv/writer_input.h"

namespace mkv {

// Fills the entry; number counts from 1. What WebM lacks is left out there. Throws kUnsupportedTypeError,
// kUnsupportedCodecError.
void FillStrictTrackEntry(libmatroska::KaxTrackEntry& entry, UINT64 number, const Track& track,
                          CIdentifiers& identifiers, bool isWebm);

} // namespace mkv

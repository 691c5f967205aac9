// TrackRow: one row of the track settings, a value with strings of its own.
//
// Owner: itself; copies are deep. Threads: as a value. Errors: std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/bstr.h"

namespace client {

struct TrackRow {
    INT32 index = 0; // the input, from 0
    BYTE enabled = 1;
    BYTE isDefault = 0;
    BYTE reserved = 0;  // kept by the filter, for nothing
    win::Bstr language; // null and empty ones are kept apart, as the filter does
    win::Bstr name;
    INT32 trackType = MuxTrackType_Unknown; // a MuxTrackType, or whatever else was stored
};

} // namespace client

// TrackRecord: one track's settings as the filter gave them, with strings of its own.
//
// Owner: itself. Threads: one. Errors: std::bad_alloc.
#pragma once

#include <optional>

#include <qrx_mkvmuxer.h>

#include "win/bstr.h"

class TrackRecord {
  public:
    // What the filter knows of the row; none when it has no such row.
    static std::optional<TrackRecord> Read(IModuleConfig& config, INT32 index);
    HRESULT Write(IModuleConfig& config) const;

    INT32 index = 0;
    bool enabled = false;
    BYTE isDefault = 0; // neither shown nor changed, as the one below
    BYTE reserved = 0;
    win::Bstr language;
    win::Bstr name;
    INT32 trackType = -1;
};

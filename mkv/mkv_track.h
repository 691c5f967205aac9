// MkvTrack: an input that becomes a track: its media type and its settings row, both copies.
#pragma once

#include <vector>

#include "dshow/media_type.h"
#include "records/track_settings_row.h"

struct MkvTrack {
    CMediaType type;
    records::CTrackSettingsRow settings;
};

using MkvTrackList = std::vector<MkvTrack>; // the track number is the position, from 1

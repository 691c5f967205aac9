// What a file is made of, as the writer is given it: its tracks and their packets.
#pragma once

#include <vector>

#include "dshow/media_type.h"
#include "records/file_options.h"
#include "records/track_colour.h"
#include "records/track_settings_row.h"
#include "win/owned_bytes.h"

namespace mkv {

// An input that becomes a track: its media type, its settings row, its flags and what is told of its colours, all
// copies.
struct Track {
    CMediaType type;
    records::CTrackSettingsRow settings;
    MuxTrackFlags flags = records::UnsetTrackFlags(0);
    MuxTrackColour colour = records::UntoldColour(0);
};

// What is told of a file besides its tracks and packets.
struct Annotations {
    std::vector<records::Chapter> chapters;
    std::vector<records::Tag> tags;
};

using TrackList = std::vector<Track>; // the track number is the position, from 1

// One media packet. The bytes stay the caller's, unless their owner is told.
struct Packet {
    REFERENCE_TIME start = 0; // in units of 100 ns, as is stop; equal to it when the sample had no stop time
    REFERENCE_TIME stop = 0;
    const BYTE* data = nullptr;
    UINT32 size = 0; // bytes
    bool syncPoint = false;
    UINT32 stream = 0;       // the track, from 0, in the order of registration
    bool blockGroup = false; // written with its duration, and always a cue point
    // Holds the bytes that data shows, which the writer may change, or take over and leave null.
    win::OwnedBytes* owned = nullptr;
};

} // namespace mkv

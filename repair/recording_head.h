// RecordingHead: what stands in front of a recording's clusters, as far as a repair must know it.
//
// Units: bytes from the file's start, nanoseconds. Errors: Refusal for what is no recording of the muxer.
#pragma once

#include <map>

#include "mkv/file_form.h"
#include "sources/matroska/ebml_reader.h"

namespace repair {

struct RecordedTrack {
    UINT64 type = 0;
    UINT64 defaultDurationNs = 0; // 0: not said
};

struct RecordingHead {
    MuxProfile profile = MuxProfile_Compatible;
    matroska::Element segment;
    matroska::Element tracks;
    std::map<UINT64, RecordedTrack> trackOf; // by their numbers
    UINT64 cueTrack = 0;                     // as while recording; 0: there is none
    bool hasSeekHead = false;                // which is filled at the end
};

[[nodiscard]] RecordingHead ReadRecordingHead(const matroska::EbmlReader& reader);

} // namespace repair

// What is known of a recording that was cut off before it was finalised.
// Units: bytes from the output's start unless named; nanoseconds.
#pragma once

#include <optional>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "win/platform.h"

namespace mkv {

struct CutRecording {
    struct CuePoint {
        UINT64 timeNs = 0;
        UINT64 track = 0;
        UINT64 clusterPosition = 0;  // from the Segment's content
        UINT64 relativePosition = 0; // of the block's element, from the cluster's content
        UINT64 durationNs = 0;       // of a text
    };

    // Kept for the cues in front of the clusters.
    struct IndexPlace {
        static constexpr size_t kHeadBytes = 5; // of the empty element

        UINT64 position = 0;
        UINT64 bytes = 0;
        bool isFilled = false; // by a finalisation that did not come to its end
    };

    MuxProfile profile = MuxProfile_Compatible;
    UINT64 segment = 0; // where the element begins
    UINT64 tracks = 0;  // and this one
    std::optional<UINT64> attachments;
    std::optional<UINT64> chapters;
    std::optional<UINT64> tags;
    std::optional<IndexPlace> indexPlace;
    std::vector<CuePoint> cuePoints;
    UINT64 end = 0;   // behind the last cluster that is whole
    UINT64 endNs = 0; // when the last block ends
};

} // namespace mkv

// SegmentSizes: how much of the Segment was written, part by part. Units: bytes.
#pragma once

#include "win/platform.h"

struct SegmentSizes {
    UINT64 head = 0; // the Segment's own, as written when the file was opened
    UINT64 seekHeadPlace = 0;
    UINT64 infoPlace = 0;
    UINT64 tracks = 0;
    UINT64 attachments = 0;
    UINT64 clusters = 0;
    UINT64 cues = 0;

    // The size of the Segment's data, whose head now takes headBytes.
    [[nodiscard]] UINT64 dataSize(UINT64 headBytes) const {
        return cues + clusters + attachments + tracks + head - headBytes + seekHeadPlace + infoPlace;
    }
};

namespace mkv {

// The Segment's size field is this long, so that it can be overwritten in place.
inline constexpr int kSegmentSizeFieldBytes = 5;
// All ones in it mean an unknown size.
inline constexpr UINT64 kMaxSegmentDataBytes = (UINT64{1} << (7 * kSegmentSizeFieldBytes)) - 2;

[[nodiscard]] constexpr bool FitsSegmentSizeField(UINT64 dataBytes) {
    return dataBytes <= kMaxSegmentDataBytes;
}

} // namespace mkv

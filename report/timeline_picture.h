// The pictures of a report, as SVG that stands in a page: what the file holds over time, and where its bytes go.
#pragma once

#include <string>

#include "report/file_facts.h"

namespace report {

// Clusters and cue points, keyframes, bitrate and pauses of each track, and how far the tracks lie apart, over time.
[[nodiscard]] std::string TimelinePicture(const FileFacts& facts);

// The file from its first byte to its last.
[[nodiscard]] std::string BytesPicture(const FileFacts& facts);

// Under which a track goes in the page: "track 1: video".
[[nodiscard]] std::string TrackTitle(const TrackReport& track);
// In bits a second.
[[nodiscard]] double RateOf(const FileFacts& facts, UINT64 bytes, UINT64 ticks);

} // namespace report

// A small, well-formed Matroska file made by hand, for tests of the layout reader.
#pragma once

#include <cstdint>

#include "tests/support/byte_builder.h"

namespace test_support {

// Values that a test bends to make the file wrong; by default all are right.
struct SampleFileOptions {
    int64_t seekPositionError = 0;
    int64_t cuePositionError = 0;
    int64_t cueRelativeError = 0;
    int64_t segmentSizeError = 0;
    uint64_t cueTime = 40;
    uint8_t cueTrack = 1;
    uint64_t cueBlockNumber = 2;
    uint8_t secondBlockTrack = 1;
    uint64_t secondClusterTime = 1000;
    double durationMs = 1500;
    bool listCues = true;
};

// Head, Segment with seek head, padding, Info, two tracks, two clusters (blocks at 0 and 40, a group at 1000), Cues.
[[nodiscard]] RawBytes MakeSampleFile(const SampleFileOptions& options = {});

} // namespace test_support

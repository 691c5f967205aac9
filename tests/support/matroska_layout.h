// MatroskaLayout: what a Matroska file says about itself, as plain records, taken from the EBML tree.
//
// Units: bytes from the file's start, times in nanoseconds where named so, else in ticks of the timestamp scale.
// Owner: the bytes stay the caller's and outlive the layout. Threads: as a value.
// Errors: findings in `problems`; records hold what could be read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ebml_reader.h"

namespace test_support {

struct LayoutSeekEntry {
    uint32_t targetId = 0;
    uint64_t position = 0; // from the Segment's data
};

struct LayoutTrack {
    uint64_t number = 0;
    uint64_t uid = 0;
    uint64_t type = 0; // 1 video, 2 audio, 17 subtitle
    std::string codecId;
    std::optional<std::string> language; // as stored; none when the element is absent
    std::optional<std::string> name;
    std::optional<uint64_t> flagDefault;
    std::optional<uint64_t> flagForced;
    std::optional<uint64_t> flagLacing;
    std::optional<uint64_t> defaultDurationNs;
    std::optional<uint64_t> codecPrivateSize;
    std::optional<uint64_t> codecDelayNs;
};

struct LayoutBlock {
    uint64_t offset = 0; // of the SimpleBlock or Block element
    bool simple = false;
    uint64_t track = 0;
    int64_t relativeTime = 0; // ticks from the cluster's time, as stored in 16 bits
    int64_t time = 0;         // ticks from the file's start
    uint8_t flags = 0;
    bool keyframe = false;            // a Block's: no reference to another one
    std::optional<uint64_t> duration; // ticks
    std::vector<ByteView> frames;     // one without lacing
};

struct LayoutCluster {
    uint64_t offset = 0;
    uint64_t dataOffset = 0;
    std::optional<uint64_t> timestamp; // ticks
    std::vector<LayoutBlock> blocks;
};

struct LayoutCue {
    uint64_t time = 0; // ticks
    uint64_t track = 0;
    uint64_t clusterPosition = 0; // from the Segment's data
    std::optional<uint64_t> relativePosition;
    std::optional<uint64_t> duration; // ticks
    std::optional<uint64_t> blockNumber;
};

struct MatroskaLayout {
    ByteView file;
    EbmlTree tree;
    std::vector<std::string> problems; // the tree's included
    std::vector<std::string> cuts;     // what is wrong only because the file ends too early

    std::string docType;
    uint64_t timestampScaleNs = 0;
    std::optional<double> duration; // ticks, with fractions
    std::string muxingApp;
    std::string writingApp;
    std::vector<LayoutSeekEntry> seekEntries;
    std::vector<LayoutTrack> tracks;
    std::vector<LayoutCluster> clusters;
    std::vector<LayoutCue> cues;

    // The first Segment, or null. Its data is where positions in the file count from.
    [[nodiscard]] const EbmlElement* Segment() const { return tree.Child(ebml_id::kSegment); }
    [[nodiscard]] const LayoutTrack* Track(uint64_t number) const;
    [[nodiscard]] std::vector<LayoutBlock> BlocksOf(uint64_t track) const;
};

[[nodiscard]] MatroskaLayout ReadLayout(ByteView file);

// The block's fields, without the cluster's time. None when the bytes are no block; `lacingProblem` is set when the
// frames cannot be told apart.
[[nodiscard]] std::optional<LayoutBlock> ReadBlock(ByteView data, std::string& lacingProblem);

} // namespace test_support

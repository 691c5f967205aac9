// FileJudge: what a run's file must hold, by what its output took, and what it does hold, by our own reader.
//
// Units: bytes. Owner: the test. Threads: as a value. Errors: failures of the running test.
#pragma once

#include <ostream>
#include <set>

#include "tests/faults/fault_rig.h"
#include "tests/support/matroska_layout.h"

namespace faults {

// A frame of an input, as a block holds it.
struct Frame {
    size_t input;
    size_t number;
    auto operator<=>(const Frame&) const = default;
};

inline void PrintTo(const Frame& frame, std::ostream* stream) {
    *stream << "frame " << frame.number << " of input " << frame.input;
}

using Frames = std::set<Frame>;

[[nodiscard]] inline size_t ClusterOf(const Frame& frame) {
    return frame.number / kFramesPerCluster;
}

class FileJudge {
  public:
    // Of a run in which nothing failed.
    FileJudge(const FaultRig& rig, const Outcome& faultless);

    // Where that run's first cluster lies. Not the same in all runs: the tracks' identifiers are random, and shorter
    // now and then, and what comes behind a part of the head that was lost takes its place.
    [[nodiscard]] static size_t FirstCluster(const Outcome& outcome);
    // Whether the run's write of that index is one of the head: in front of the first cluster's, or a patch.
    [[nodiscard]] static bool IsOfHead(const Outcome& outcome, size_t index);
    // The frames of the clusters that the output said it took.
    [[nodiscard]] Frames TakenByOutput(const Outcome& outcome) const;
    // The frames of the file; a frame that is there twice, out of order, or not as it was delivered is a failure.
    [[nodiscard]] Frames InFile(const Bytes& file) const;
    // The same for a file whose head was damaged: what a reader finds that looks for clusters.
    [[nodiscard]] Frames InClusters(const Outcome& outcome) const;
    // No finding of the layout check, a duration that ends with the last frame, and in a strict file statistics of the
    // very frames that are there.
    void ExpectSound(const Bytes& file, bool mayBeCut) const;

    [[nodiscard]] static Frames TakenByFilter(const Outcome& outcome);

  private:
    [[nodiscard]] Frames FramesOf(const test_support::MatroskaLayout& layout) const;
    void ExpectDuration(const test_support::MatroskaLayout& layout, const Frames& frames) const;
    // That stand in front of the statistics, and by themselves where those are not written.
    [[nodiscard]] size_t UserTags() const { return m_rig.What().isAnnotated ? 1 : 0; }
    void ExpectStatistics(const test_support::MatroskaLayout& layout, const Frames& frames) const;

    const FaultRig& m_rig;
    Bytes m_head; // as it was written first
};

} // namespace faults

// StrictTest: a writer of the strict profile, and short ways to look at the clusters of its file.
#pragma once

#include "tests/mkv/writer_fixture.h"

class StrictTest : public WriterTest {
  protected:
    void OpenStrict() {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = 1;
        Open(options);
    }

    // In milliseconds, as are all times here.
    std::vector<uint64_t> ClusterTimes() {
        std::vector<uint64_t> times;
        for (const auto& cluster : File().clusters) {
            times.push_back(cluster.timestamp.value_or(~uint64_t{0}));
        }
        return times;
    }
    std::vector<int64_t> BlockTimes(uint64_t track) {
        std::vector<int64_t> times;
        for (const auto& block : File().BlocksOf(track)) {
            times.push_back(block.time);
        }
        return times;
    }
    std::vector<size_t> BlocksOfClusters() {
        std::vector<size_t> counts;
        for (const auto& cluster : File().clusters) {
            counts.push_back(cluster.blocks.size());
        }
        return counts;
    }

    using Times = std::vector<int64_t>;
    using ClusterTimeList = std::vector<uint64_t>;
    using Counts = std::vector<size_t>;
};

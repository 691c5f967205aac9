// StrictTest: a writer of the strict profile, and short ways to look at the clusters of its file.
#pragma once

#include "tests/mkv/writer_fixture.h"
#include "tests/support/written_files.h"

class StrictTest : public WriterTest {
  protected:
    StrictTest() { KeepFromJudges(); } // under their usual name, which is that of compatible files

    void TearDown() override {
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        if (m_isOpened && !m_writer.isOpen() && m_isJudged) {
            test_support::SaveForJudges(std::string(test->test_suite_name()) + "." + test->name() + ".strict",
                                        m_stream.Bytes());
        }
    }

    void OpenStrict() {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = 1;
        m_io.setStream(&m_stream);
        m_writer.Open(&m_io, options);
        m_isOpened = true;
    }
    // For files that players do not like and the format allows.
    void KeepStrictFromJudges() { m_isJudged = false; }

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

  private:
    bool m_isOpened = false;
    bool m_isJudged = true;
};

// From packets to clusters: when clusters begin, and which times their blocks get.
#include <limits>

#include "tests/mkv/writer_fixture.h"

namespace {

using test_support::LayoutBlock;

class ClustersTest : public WriterTest {
  protected:
    // The times of the clusters, in milliseconds.
    std::vector<uint64_t> ClusterTimes() {
        std::vector<uint64_t> times;
        for (const auto& cluster : File().clusters) {
            times.push_back(cluster.timestamp.value_or(~uint64_t{0}));
        }
        return times;
    }

    std::vector<int64_t> BlockTimes(uint64_t track) {
        std::vector<int64_t> times;
        for (const LayoutBlock& block : File().BlocksOf(track)) {
            times.push_back(block.time);
        }
        return times;
    }

    std::vector<uint64_t> CueTimes() {
        std::vector<uint64_t> times;
        for (const auto& cue : File().cues) {
            times.push_back(cue.time);
        }
        return times;
    }
};

using Times = std::vector<int64_t>;
using ClusterTimeList = std::vector<uint64_t>;

// ---- Times ---------------------------------------------------------------------------------------------------------

TEST_F(ClustersTest, ATrackThatStartsBelowZeroIsShiftedAndOtherTracksAreNot) {
    RegisterAudio();
    RegisterAudio();
    Open();
    Write(0, -40 * kMs, 0);
    Write(1, 10 * kMs, 30 * kMs);
    Write(0, 0, 40 * kMs);
    Write(0, 40 * kMs, 80 * kMs);
    EXPECT_EQ(BlockTimes(1), (Times{0, 40, 80}));
    EXPECT_EQ(BlockTimes(2), (Times{10}));
    EXPECT_EQ(File().duration, 120.0);
}

TEST_F(ClustersTest, ALaterPacketStillNegativeAfterTheShiftMovesToZeroWithItsLengthKept) {
    RegisterSubtitle();
    Open();
    WriteGroup(0, -40 * kMs, 0);
    WriteGroup(0, -100 * kMs, -75 * kMs);
    EXPECT_EQ(BlockTimes(1), (Times{0, 0}));
    EXPECT_EQ(File().BlocksOf(1)[1].duration, 25u);
}

TEST_F(ClustersTest, AFirstPacketWithoutAByteDecidesTheShiftAllTheSame) {
    RegisterAudio();
    RegisterAudio();
    Open();
    Write(0, -40 * kMs, 0, true, {});
    Write(0, 0, 40 * kMs);
    Write(0, -100 * kMs, -60 * kMs); // still below zero
    Write(1, 100 * kMs, 140 * kMs, true, {});
    Write(1, -40 * kMs, 0);
    EXPECT_EQ(BlockTimes(1), (Times{40, 0}));
    EXPECT_EQ(BlockTimes(2), (Times{0}));
}

TEST_F(ClustersTest, APacketThatStopsBeforeItStartsHasNoDuration) {
    RegisterSubtitle();
    Open();
    WriteGroup(0, 100 * kMs, 60 * kMs);
    EXPECT_EQ(BlockTimes(1), (Times{100}));
    EXPECT_EQ(File().BlocksOf(1)[0].duration, 0u);
    EXPECT_EQ(File().duration, 100.0);
}

TEST_F(ClustersTest, ExtremeTimesAreWrittenWithoutWrapping) {
    constexpr INT64 kMin = std::numeric_limits<INT64>::min();
    constexpr INT64 kMax = std::numeric_limits<INT64>::max();
    constexpr int64_t kLatestMs = kMax / 100 / kMs;
    KeepFromJudges(); // 292 years are more than the judges' players like
    Expect({.clustersMayGoBack = true});
    RegisterVideo();
    RegisterSubtitle();
    Open();
    Write(0, kMin, kMax, true);
    Write(0, kMax, kMin, true);
    WriteGroup(1, 0, kMax);
    WriteGroup(1, kMax, kMax);
    WriteGroup(1, kMin, kMin);
    EXPECT_EQ(BlockTimes(1), (Times{0, kLatestMs}));
    EXPECT_EQ(BlockTimes(2), (Times{0, kLatestMs, 0}));
}

// A block's offset is truncated towards zero: before its cluster's time that rounds the block up, behind it down.
TEST_F(ClustersTest, FramesOfFractionsOfAMillisecondKeepTheirMillisecond) {
    constexpr INT64 kFrame = 417083; // 23.976 frames a second
    RegisterVideo();
    Open();
    for (INT64 frame = 0; frame < 6; ++frame) {
        Write(0, frame * kFrame, (frame + 1) * kFrame, frame % 2 == 0);
    }
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 125, 208}));
    EXPECT_EQ(BlockTimes(1), (Times{0, 41, 84, 125, 167, 208}));
    EXPECT_EQ(CueTimes(), (std::vector<uint64_t>{0, 83, 166}));
}

// Its cluster begins where it ends, less than a millisecond later.
TEST_F(ClustersTest, ABlockThatEndsAFractionBehindItsStartIsOneMillisecondBehindItsCue) {
    RegisterSubtitle();
    Open();
    WriteGroup(0, 0, 40 * kMs);
    WriteGroup(0, 40000 * kMs + kMs * 4 / 10, 40001 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 40001}));
    EXPECT_EQ(BlockTimes(1), (Times{0, 40001}));
    EXPECT_EQ(CueTimes(), (std::vector<uint64_t>{0, 40000}));
}

// ---- Clusters ------------------------------------------------------------------------------------------------------

TEST_F(ClustersTest, AVideoKeyframeAtTimeZeroOpensNoCluster) {
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    Write(0, 40 * kMs, 80 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0}));
    EXPECT_EQ(File().clusters[0].blocks.size(), 2u);
}

TEST_F(ClustersTest, AVideoKeyframeAtAnyOtherTimeOpensAClusterAtItsEnd) {
    RegisterVideo();
    Open();
    Write(0, 0, 2 * kMs, true);
    Write(0, 2 * kMs, 4 * kMs, true);
    Write(0, 4 * kMs, 6 * kMs);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{0, 4}));
    ASSERT_EQ(File().clusters[1].blocks.size(), 2u);
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, -2);
    EXPECT_EQ(File().clusters[1].blocks[1].relativeTime, 0);
    EXPECT_EQ(BlockTimes(1), (Times{0, 2, 4}));
}

TEST_F(ClustersTest, ABlockWithoutDurationOpensAClusterAtItsOwnTime) {
    RegisterVideo();
    Open();
    Write(0, 40 * kMs, 40 * kMs, true);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{0, 40}));
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, 0);
}

TEST_F(ClustersTest, TheCurrentClusterIsWrittenEvenWhenItHoldsNoBlock) {
    RegisterVideo();
    Open();
    Write(0, 80 * kMs, 120 * kMs, true);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{0, 120}));
    EXPECT_TRUE(File().clusters[0].blocks.empty());
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, -40);
}

TEST_F(ClustersTest, AFirstBlockThatEndsTooLateLeavesAnEmptyClusterAtZero) {
    RegisterAudio();
    Open();
    Write(0, 32700 * kMs, 32767 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 32767}));
    EXPECT_TRUE(File().clusters[0].blocks.empty());
}

TEST_F(ClustersTest, WithoutVideoClustersAreSplitBySpanToTheBlocksEnd) {
    RegisterAudio();
    Open();
    Write(0, 0, 20 * kMs);
    Write(0, 32746 * kMs, 32766 * kMs);
    Write(0, 32747 * kMs, 32767 * kMs);
    Write(0, 65513 * kMs, 65533 * kMs);
    Write(0, 65514 * kMs, 65534 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 32767, 65534}));
    EXPECT_EQ(File().clusters[0].blocks.size(), 2u);
    EXPECT_EQ(File().clusters[1].blocks.size(), 2u);
    EXPECT_EQ(File().clusters[2].blocks.size(), 1u);
    EXPECT_TRUE(File().cues.empty());
}

TEST_F(ClustersTest, WithoutVideoClustersAreSplitAtFourMebibytes) {
    constexpr size_t kMiB = size_t{1} << 20;
    RegisterAudio();
    Open();
    Write(0, 0, 10 * kMs, true, Bytes(3 * kMiB));
    Write(0, 10 * kMs, 20 * kMs, true, Bytes(kMiB - 1));
    Write(0, 20 * kMs, 30 * kMs, true, Bytes(1));
    Write(0, 30 * kMs, 40 * kMs, true, Bytes(4 * kMiB - 2));
    Write(0, 40 * kMs, 50 * kMs, true, Bytes(4 * kMiB));
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 30, 50}));
    EXPECT_EQ(File().clusters[0].blocks.size(), 2u);
    EXPECT_EQ(File().clusters[1].blocks.size(), 2u);
    EXPECT_TRUE(File().cues.empty());
}

TEST_F(ClustersTest, TwoVideoTracksTheSecondOneAddedIsTheCueTrack) {
    RegisterVideo();
    RegisterVideo();
    RegisterAudio();
    Open();
    Write(0, 40 * kMs, 80 * kMs, true);
    Write(1, 40 * kMs, 80 * kMs, true);
    Write(0, 80 * kMs, 120 * kMs, true);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 80}));
    ASSERT_EQ(File().cues.size(), 1u);
    EXPECT_EQ(File().cues[0].track, 2u);
    EXPECT_EQ(File().cues[0].time, 40u);
}

TEST_F(ClustersTest, ManyPacketsNeverMakeAClusterLongerThanItsLimit) {
    RegisterVideo();
    Open();
    for (INT64 frame = 0; frame < 400; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, false, Bytes(60000));
    }
    for (const auto& cluster : File().clusters) {
        EXPECT_LE(cluster.blocks.size() * 60000, size_t{4194304});
    }
    EXPECT_EQ(File().BlocksOf(1).size(), 400u);
}

TEST_F(ClustersTest, OneClusterIsOneWriteAndTheStreamIsAskedForNothing) {
    RegisterVideo();
    Open();
    for (INT64 frame = 0; frame < 100; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs);
    }
    m_stream.ClearCalls();
    Write(0, 4000 * kMs, 4040 * kMs, true);
    const auto calls = m_stream.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].operation, test_support::StreamOperation::Write);
    EXPECT_EQ(calls[0].position + calls[0].size, m_stream.Bytes().size());
    EXPECT_EQ(File().clusters.at(0).offset, calls[0].position);
}

// ---- Block times that do not fit -----------------------------------------------------------------------------------

TEST_F(ClustersTest, ABlockLongerThanItsOffsetCanSayOpensAClusterAtItsOwnStart) {
    RegisterSubtitle();
    Open();
    WriteGroup(0, 1000 * kMs, 61000 * kMs);
    WriteGroup(0, 61000 * kMs, 62000 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 1000, 62000}));
    EXPECT_EQ(BlockTimes(1), (Times{1000, 61000}));
    EXPECT_EQ(File().BlocksOf(1)[0].duration, 60000u);
}

TEST_F(ClustersTest, TheLongestBlockThatFitsOpensItsClusterAtItsEnd) {
    RegisterVideo();
    Open();
    Write(0, 1000 * kMs, 33768 * kMs, true);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{0, 33768}));
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, -32768);
    EXPECT_EQ(BlockTimes(1), (Times{1000}));
}

TEST_F(ClustersTest, ABlockOneMillisecondLongerOpensItsClusterAtItsStart) {
    RegisterVideo();
    Open();
    Write(0, 1000 * kMs, 33769 * kMs, true);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{0, 1000}));
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, 0);
}

TEST_F(ClustersTest, ALateSubtitleThatDoesNotFitOpensAClusterAtItsOwnStart) {
    Expect({.clustersMayGoBack = true});
    RegisterVideo();
    RegisterSubtitle();
    Open();
    Write(0, 100000 * kMs, 100040 * kMs, true);
    WriteGroup(1, 50000 * kMs, 90000 * kMs); // ends near the cluster, begins too far from it
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 100040, 50000}));
    EXPECT_EQ(BlockTimes(2), (Times{50000}));
}

TEST_F(ClustersTest, ALateBlockThatFitsStaysInItsCluster) {
    RegisterVideo();
    RegisterSubtitle();
    Open();
    Write(0, 100000 * kMs, 100040 * kMs, true);
    WriteGroup(1, 90000 * kMs, 91000 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 100040}));
    EXPECT_EQ(BlockTimes(2), (Times{90000}));
}

} // namespace

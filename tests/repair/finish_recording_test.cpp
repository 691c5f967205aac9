// Recordings that were cut off are finished as the muxer would have.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/repair/recording_fixture.h"
#include "tests/support/layout_check.h"

using test_support::StreamOperation;
using testing::ElementsAre;
using testing::IsEmpty;

class FinishRecordingTest : public RecordingTest {
  protected:
    // How many clusters of the finished file end at that byte or in front of it.
    [[nodiscard]] UINT64 WholeClusters(UINT64 size) const {
        UINT64 count = 0;
        const auto layout = test_support::ReadLayout(m_finished);
        for (const auto* const cluster : layout.Segment()->Children(test_support::ebml_id::kCluster)) {
            count += cluster->End() <= size ? 1 : 0;
        }
        return count;
    }

    [[nodiscard]] static bool IsStrict() { return GetParam() == MuxProfile_Strict; }

    void ExpectRepaired(UINT64 size, const repair::Recording& recording) {
        const Bytes repaired = m_stream.Bytes();
        EXPECT_EQ(recording.clusters, WholeClusters(size));
        EXPECT_THAT(test_support::CheckLayout(repaired), IsEmpty());
        const auto layout = test_support::ReadLayout(repaired);
        EXPECT_EQ(layout.clusters.size(), WholeClusters(size));
        const UINT64 kept = layout.clusters.empty()
                                ? HeadEnd()
                                : layout.Segment()->Children(test_support::ebml_id::kCluster).back()->End();
        EXPECT_TRUE(std::equal(m_cut.begin() + static_cast<ptrdiff_t>(HeadEnd()),
                               m_cut.begin() + static_cast<ptrdiff_t>(kept),
                               repaired.begin() + static_cast<ptrdiff_t>(HeadEnd())))
            << "whole clusters stay as they are";
    }
};

TEST_P(FinishRecordingTest, ARecordingThatLacksNothingButItsEndBecomesTheFileThatStopMakes) {
    for (const bool hasAttachment : {false, true}) {
        Record({.hasAttachment = hasAttachment});
        const repair::Recording recording = Repair(m_cut);
        EXPECT_FALSE(recording.isFinished);
        EXPECT_EQ(recording.cut.endNs, 2400000000U);
        EXPECT_EQ(recording.cut.cuePoints.size(), 6U);
        EXPECT_TRUE(m_stream.Bytes() == m_finished);
    }
}

TEST_P(FinishRecordingTest, ChaptersAndTagsInFrontOfTheClustersAreKeptAndListed) {
    Record({.hasAttachment = true, .hasAnnotations = true});
    EXPECT_FALSE(Repair(m_cut).isFinished);
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
    const auto layout = test_support::ReadLayout(m_stream.Bytes());
    const bool isStrict = GetParam() == MuxProfile_Strict;
    for (const uint32_t id : {test_support::ebml_id::kChapters, test_support::ebml_id::kTags}) {
        EXPECT_EQ(layout.Segment()->Children(id).size(), isStrict ? 1U : 0U);
        EXPECT_EQ(std::count_if(layout.seekEntries.begin(), layout.seekEntries.end(),
                                [id](const auto& entry) { return entry.targetId == id; }),
                  isStrict ? 1 : 0);
    }
}

// What Stop had written behind the clusters goes with the torn end; what stands in front is there until the very last.
TEST_P(FinishRecordingTest, AFinalisationThatBrokeOffHasStillWhatStoodInFront) {
    Record({.hasAnnotations = true});
    for (UINT64 size = ClustersEnd(); size < m_finished.size(); ++size) {
        Bytes bytes(m_finished.begin(), m_finished.begin() + static_cast<ptrdiff_t>(size));
        std::copy_n(m_cut.begin(), HeadEnd(), bytes.begin());
        Repair(bytes);
        ASSERT_TRUE(m_stream.Bytes() == m_finished) << size;
    }
}

TEST_P(FinishRecordingTest, WhereverItIsCutEveryWholeClusterIsKept) {
    Record({.hasSubtitles = true, .hasAttachment = true, .hasAnnotations = true, .pictures = 25});
    UINT64 size = HeadEnd();
    ExpectRepaired(size, Repair(Bytes(m_cut.begin(), m_cut.begin() + static_cast<ptrdiff_t>(size))));
    while (WholeClusters(size) == 0) {
        ++size;
    }
    for (; size <= m_cut.size(); ++size) {
        SCOPED_TRACE(size);
        ExpectRepaired(size, Repair(Bytes(m_cut.begin(), m_cut.begin() + static_cast<ptrdiff_t>(size))));
        const repair::Recording again = repair::SurveyRecording(m_stream, [](UINT64, UINT64) {});
        ASSERT_TRUE(again.isFinished);
    }
}

TEST_P(FinishRecordingTest, ACopyOfAFinishedFileThatBrokeOffIsFinishedAgain) {
    Record();
    const UINT64 size = ClusterStarts().back() + 1;
    ExpectRepaired(size, Repair(Bytes(m_finished.begin(), m_finished.begin() + static_cast<ptrdiff_t>(size))));
}

TEST_P(FinishRecordingTest, TheRoomForTheIndexIsUsedAsStopWouldHave) {
    for (const UINT64 bytes : {UINT64{4000}, UINT64{64}}) { // the other is too small
        Record({.hasAttachment = true, .hasAnnotations = true, .indexBytes = bytes});
        const repair::Recording recording = Repair(m_cut);
        EXPECT_EQ(recording.cut.indexPlace.has_value(), GetParam() == MuxProfile_Strict);
        EXPECT_TRUE(m_stream.Bytes() == m_finished);
        EXPECT_THAT(test_support::CheckLayout(m_stream.Bytes()), IsEmpty());
    }
}

TEST_P(FinishRecordingTest, CuesInFrontOfAStopThatDidNotComeToItsEndAreWrittenAnew) {
    Record({.indexBytes = 4000});
    // All but the seek head and the Segment's size, which are the last.
    Bytes broken(m_finished.begin(), m_finished.begin() + static_cast<ptrdiff_t>(ClustersEnd()));
    const UINT64 tracks = test_support::ReadLayout(m_finished).Segment()->Child(test_support::ebml_id::kTracks)->offset;
    std::copy_n(m_cut.begin(), tracks, broken.begin());
    const repair::Recording recording = Repair(broken);
    EXPECT_FALSE(recording.isFinished);
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
    // What the cues of the last cluster told goes with it.
    broken.resize(ClusterStarts().back() + 1);
    Repair(broken);
    const Bytes repaired = m_stream.Bytes();
    const auto layout = test_support::ReadLayout(repaired);
    EXPECT_THAT(test_support::CheckLayout(layout), IsEmpty());
    EXPECT_EQ(layout.clusters.size() + 1, ClusterStarts().size());
    EXPECT_TRUE(repair::SurveyRecording(m_stream, [](UINT64, UINT64) {}).isFinished);
}

TEST_P(FinishRecordingTest, AFileThatIsWholeIsLeftAlone) {
    Record();
    m_stream.ClearCalls();
    EXPECT_TRUE(Repair(m_finished).isFinished);
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
    EXPECT_THAT(m_stream.Calls(StreamOperation::Write), IsEmpty());
}

// Of the process nothing more comes from that write on; the write may bring a part.
TEST_P(FinishRecordingTest, ARepairThatIsKilledAtAnyMomentCanBeRunAgain) {
    Record({.hasSubtitles = true});
    const Bytes torn(m_cut.begin(), m_cut.end() - 3);
    m_stream.ClearCalls();
    const UINT64 keptEnd = Repair(torn).cut.end;
    const Bytes expected = m_stream.Bytes();
    const std::vector<test_support::StreamCall> writes = m_stream.Calls(StreamOperation::Write);
    ASSERT_GE(writes.size(), 4U);
    ASSERT_EQ(m_stream.Calls(StreamOperation::SetSize).front().size, keptEnd) << "the torn end goes first";
    Bytes killed = torn;
    killed.resize(keptEnd);
    for (const auto& write : writes) {
        for (UINT64 kept = 0; kept <= write.size; ++kept) {
            SCOPED_TRACE(testing::Message() << kept << " of " << write.size << " bytes at " << write.position);
            Bytes now = killed;
            now.resize(std::max<size_t>(now.size(), write.position + kept));
            std::copy_n(expected.begin() + static_cast<ptrdiff_t>(write.position), kept,
                        now.begin() + static_cast<ptrdiff_t>(write.position));
            Repair(now);
            EXPECT_TRUE(m_stream.Bytes() == expected);
            if (kept == write.size) {
                killed = now;
            }
        }
    }
}

TEST_P(FinishRecordingTest, AWriteThatFailsIsTold) {
    Record();
    m_stream.SetBytes(m_cut);
    const repair::Recording recording = repair::SurveyRecording(m_stream, [](UINT64, UINT64) {});
    m_stream.FailFrom(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    try {
        repair::FinishRecording(m_stream, recording);
        ADD_FAILURE() << "it was not told";
    } catch (const repair::WriteFailure& failure) {
        EXPECT_EQ(failure.hr, STG_E_MEDIUMFULL);
    }
    m_stream.ClearFailures();
    Repair(m_stream.Bytes());
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
}

TEST_P(FinishRecordingTest, ALastClusterWhoseBytesNeverCameGoesWithItsCuePoints) {
    Record();
    Bytes bytes = m_cut;
    std::fill(bytes.begin() + static_cast<ptrdiff_t>(ClusterStarts().back() + 12), bytes.end(), BYTE{0});
    ExpectRepaired(ClusterStarts().back(), Repair(bytes));
    EXPECT_EQ(test_support::ReadLayout(m_stream.Bytes()).cues.size(), 5U);
}

TEST_P(FinishRecordingTest, RoomThatTheFileSystemMadeIsCutOff) {
    Record();
    Bytes bytes = m_cut;
    bytes.resize(bytes.size() + 100000);
    Repair(bytes);
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
}

TEST_P(FinishRecordingTest, SoundAloneGetsACuePointACluster) {
    Record({.hasVideo = false, .pictures = 2000});
    Repair(m_cut);
    const Bytes repaired = m_stream.Bytes();
    const auto layout = test_support::ReadLayout(repaired);
    ASSERT_GE(layout.clusters.size(), 2U);
    EXPECT_EQ(layout.cues.size(), layout.clusters.size());
    EXPECT_THAT(test_support::CheckLayout(layout), IsEmpty());
}

// Of the first one in a strict file, of the last one in a compatible file.
TEST_P(FinishRecordingTest, OfTwoVideoTracksTheOneThatIsCuedWhileRecordingIs) {
    Record({.hasSecondVideo = true});
    Repair(m_cut);
    const Bytes repaired = m_stream.Bytes();
    const auto layout = test_support::ReadLayout(repaired);
    EXPECT_EQ(layout.cues.size(), 6U);
    for (const auto& cue : layout.cues) {
        EXPECT_EQ(cue.track, IsStrict() ? 2U : 3U);
    }
    EXPECT_TRUE(repaired == m_finished);
}

// The second one's block is the first of each cluster, which a compatible file cues.
TEST_P(FinishRecordingTest, OfTwoSoundTracksWithoutVideoAStrictFileCuesTheFirst) {
    Record({.hasVideo = false, .hasSecondSound = true, .pictures = 2000});
    Repair(m_cut);
    const Bytes repaired = m_stream.Bytes();
    const auto layout = test_support::ReadLayout(repaired);
    ASSERT_GE(layout.clusters.size(), 2U);
    ASSERT_EQ(layout.cues.size(), layout.clusters.size());
    for (size_t i = 0; i < layout.cues.size(); ++i) {
        ASSERT_EQ(layout.clusters[i].blocks.front().track, 2U);
        EXPECT_EQ(layout.cues[i].track, IsStrict() ? 1U : 2U);
    }
    EXPECT_THAT(test_support::CheckLayout(layout), IsEmpty());
}

TEST_P(FinishRecordingTest, KeyframesBehindOtherBlocksOfTheFirstClusterAreCuePointsToo) {
    Record({.soundFirst = true});
    EXPECT_EQ(Repair(m_cut).cut.cuePoints.size(), 6U);
    EXPECT_TRUE(m_stream.Bytes() == m_finished);
}

// What was counted of its tracks is not known.
TEST_P(FinishRecordingTest, ItTellsNothingOfHowMuchOfEachTrackItHolds) {
    Record({.hasStatistics = true});
    Repair(m_cut);
    const Bytes repaired = m_stream.Bytes();
    const auto layout = test_support::ReadLayout(repaired);
    EXPECT_THAT(test_support::CheckLayout(layout), IsEmpty());
    EXPECT_EQ(layout.Segment()->Child(test_support::ebml_id::kTags), nullptr);
    EXPECT_EQ(layout.cues.size(), 6U);
}

// Stop had written all but the size when the process was killed.
TEST_P(FinishRecordingTest, AFileThatLacksItsSizeAloneIsFinished) {
    Record({.hasStatistics = true});
    Bytes bytes = m_finished;
    const auto sizeField = test_support::ReadLayout(m_cut).Segment()->DataOffset();
    std::copy_n(m_cut.begin(), sizeField, bytes.begin());
    ASSERT_FALSE(bytes == m_finished);
    ExpectRepaired(bytes.size(), Repair(bytes));
}

TEST_P(FinishRecordingTest, ProgressIsToldAndMayEndTheSurvey) {
    Record();
    m_stream.SetBytes(m_cut);
    std::vector<UINT64> told;
    (void)repair::SurveyRecording(m_stream, [&](UINT64 done, UINT64 all) {
        EXPECT_EQ(all, m_cut.size());
        told.push_back(done);
    });
    EXPECT_EQ(told.size(), ClusterStarts().size());
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_EQ(told.back(), m_cut.size());
    EXPECT_THROW((void)repair::SurveyRecording(m_stream, [](UINT64, UINT64) { throw std::runtime_error("end"); }),
                 std::runtime_error);
    EXPECT_TRUE(m_stream.Bytes() == m_cut);
}

INSTANTIATE_TEST_SUITE_P(Profiles, FinishRecordingTest, testing::Values(MuxProfile_Compatible, MuxProfile_Strict));

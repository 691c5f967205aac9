// The strict profile's cues: of which blocks, and that each leads to its block.
#include <gmock/gmock.h>

#include "tests/mkv/strict_fixture.h"
#include "tests/support/layout_dump.h"

namespace {

namespace ebml_id = test_support::ebml_id;

constexpr uint32_t kCueDuration = 0xb2;

class StrictCuesTest : public StrictTest {
  protected:
    // "track@time" or "track@time+duration", in the order of the file. Each leads to the very place of its block.
    std::vector<std::string> Cues() {
        std::vector<std::string> texts;
        const auto& file = File();
        const auto* const element = Element({ebml_id::kCues});
        const auto points = element == nullptr ? std::vector<const test_support::EbmlElement*>()
                                               : element->Children(ebml_id::kCuePoint);
        for (size_t i = 0; i < points.size(); ++i) {
            const auto& cue = file.cues.at(i);
            std::string text = std::to_string(cue.track) + "@" + std::to_string(cue.time);
            const auto* const duration = points[i]->Child(ebml_id::kCueTrackPositions)->Child(kCueDuration);
            if (duration != nullptr) {
                text += "+" + std::to_string(test_support::UnsignedOf(file.file, *duration).value_or(0));
            }
            texts.push_back(text);
            ExpectToLeadToItsBlock(cue);
        }
        return texts;
    }

    void ExpectToLeadToItsBlock(const test_support::LayoutCue& cue) {
        for (const auto* const cluster : File().Segment()->Children(ebml_id::kCluster)) {
            if (cluster->offset != File().Segment()->DataOffset() + cue.clusterPosition) {
                continue;
            }
            const uint64_t place = cluster->DataOffset() + cue.relativePosition.value_or(0);
            for (const auto& child : cluster->children) {
                if (child.offset == place && IsOf(child, cue)) {
                    return;
                }
            }
        }
        ADD_FAILURE() << "track " << cue.track << " at " << cue.time << ": no such block stands there";
    }

    bool IsOf(const test_support::EbmlElement& child, const test_support::LayoutCue& cue) {
        for (const auto& block : File().BlocksOf(cue.track)) {
            const bool isInside = block.offset >= child.offset && block.offset < child.End();
            if (isInside && block.time == static_cast<int64_t>(cue.time)) {
                return true;
            }
        }
        return false;
    }
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(StrictCuesTest, KeyframesOfTheFirstVideoTrackAndNoOther) {
    RegisterAudio();
    RegisterVideo();
    RegisterVideo();
    OpenStrict();
    for (INT64 frame = 0; frame < 6; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs);
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 3 == 0);
        Write(2, frame * 40 * kMs, (frame + 1) * 40 * kMs, true);
    }
    EXPECT_THAT(Cues(), ElementsAre("2@0", "2@120"));
    EXPECT_EQ(File().clusters.size(), 2u);
}

TEST_F(StrictCuesTest, ACueHasTheRoundedAndShiftedTimeOfItsBlock) {
    RegisterVideo();
    OpenStrict();
    Write(0, 6 * kMs + 5000, 40 * kMs, true); // 7
    Write(0, -3 * kMs, 0);
    Write(0, 41 * kMs + 4999, 80 * kMs, true); // 41
    Write(0, 20 * kMs, 30 * kMs);
    EXPECT_THAT(Cues(), ElementsAre("1@10", "1@44"));
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 23}));
}

TEST_F(StrictCuesTest, EachTextHasOneWithItsDuration) {
    RegisterVideo();
    RegisterSubtitle();
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    WriteGroup(1, 10 * kMs, 300 * kMs);
    WriteGroup(1, 20 * kMs, 20 * kMs); // until the next one
    Write(0, 40 * kMs, 80 * kMs);
    WriteGroup(1, 50 * kMs, 60 * kMs);
    EXPECT_THAT(Cues(), ElementsAre("1@0", "2@10+290", "2@20", "2@50+10"));
}

TEST_F(StrictCuesTest, SoundAloneHasOneEveryTwoSecondsOrMore) {
    RegisterAudio();
    RegisterAudio();
    OpenStrict();
    for (INT64 i = 0; i <= 40; ++i) {
        Write(0, i * 150 * kMs, (i + 1) * 150 * kMs);
        Write(1, i * 150 * kMs, (i + 1) * 150 * kMs);
    }
    EXPECT_THAT(Cues(), ElementsAre("1@0", "1@2100", "1@4200"));
}

TEST_F(StrictCuesTest, ExactlyTwoSecondsAreEnough) {
    RegisterSubtitle();
    RegisterAudio();
    OpenStrict();
    Write(1, 1000 * kMs, 1020 * kMs);
    WriteGroup(0, 1000 * kMs, 1020 * kMs);
    Write(1, 2999 * kMs, 3000 * kMs);
    Write(1, 3000 * kMs, 3020 * kMs);
    EXPECT_EQ(Cues().size(), 3u);
    EXPECT_THAT(Cues(), testing::Contains("2@3000"));
}

TEST_F(StrictCuesTest, TheyLeadToTheirBlocksBehindLargeOnesToo) {
    RegisterVideo();
    RegisterSubtitle();
    OpenStrict();
    for (INT64 i = 0; i < 30; ++i) {
        Write(0, (70000 + i * 40) * kMs, (70040 + i * 40) * kMs, i % 10 == 0,
              Bytes(static_cast<size_t>(1) << (i % 18)));
        WriteGroup(1, (70001 + i * 40) * kMs, (70040 + i * 40) * kMs, Bytes(static_cast<size_t>(i) * 5000 + 1));
    }
    EXPECT_EQ(Cues().size(), 33u);
}

TEST_F(StrictCuesTest, AFileWithoutAnyHasNoElement) {
    RegisterVideo();
    OpenStrict();
    Write(0, 0, 40 * kMs);
    EXPECT_THAT(Cues(), IsEmpty());
    EXPECT_EQ(Element({ebml_id::kCues}), nullptr);
}

TEST_F(StrictCuesTest, AClusterThatAFailedWriteLostLeavesNeitherCueNorLength) {
    RegisterVideo();
    RegisterSubtitle();
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    Write(0, 40 * kMs, 80 * kMs, true);
    WriteGroup(1, 50 * kMs, 9000 * kMs);
    m_stream.FailNth(test_support::StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    Write(0, 80 * kMs, 120 * kMs, true);
    Write(0, 120 * kMs, 160 * kMs, true);
    EXPECT_THAT(Cues(), ElementsAre("1@0", "1@80", "1@120"));
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 80, 120}));
    EXPECT_EQ(File().duration, 160.0);
}

} // namespace

// Outputs that cannot seek: the file is written for those who watch it grow.
#include <gmock/gmock.h>

#include "tests/mkv/writer_fixture.h"
#include "tests/support/ebml_schema.h"

#include "tests/support/written_files.h"

namespace {

using namespace test_support;
using namespace test_support::ebml_id;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

class LiveFileTest : public WriterTest, public testing::WithParamInterface<MuxProfile> {
  protected:
    void SetUp() override {
        KeepFromJudges(); // they get it as what it is: its size is unknown
        m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    }

    [[nodiscard]] static bool IsStrict() { return GetParam() == MuxProfile_Strict; }

    void OpenLive() {
        records::FileOptions options;
        options.profile = GetParam();
        options.title = OLESTR("Live");
        options.seed = 1;
        Open(options);
    }

    // A picture and a sound each 40 ms, a keyframe each second.
    void WriteFrames(int first, int end) {
        for (INT64 frame = first; frame < end; ++frame) {
            Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 25 == 0, Bytes(200));
            Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(50));
        }
    }

    void CloseLive() {
        m_writer.Close();
        m_writer.detach();
        m_io.releaseStream();
    }

    [[nodiscard]] static Names NamesIn(const MatroskaLayout& layout) {
        Names names;
        for (const auto& child : layout.Segment()->children) {
            names.emplace_back(child.Name());
        }
        return names;
    }

    void ExpectSoundLayout(const std::string& test) {
        const auto layout = Snapshot();
        EXPECT_THAT(CheckLayout(layout, {.cut = true, .strict = IsStrict()}), IsEmpty());
        SaveForJudges("LiveFileTest." + test + (IsStrict() ? ".strict" : ""), layout.file, WrittenFile::CutOnPurpose);
    }
};

TEST_P(LiveFileTest, HasInfoTracksAndClustersAndNothingElse) {
    RegisterVideo();
    RegisterAudio();
    OpenLive();
    WriteFrames(0, 60);
    CloseLive();
    const auto layout = Snapshot();
    EXPECT_TRUE(layout.Segment()->unknownSize);
    EXPECT_EQ(NamesIn(layout), (Names{"Info", "Tracks", "Cluster", "Cluster", "Cluster"}));
    EXPECT_EQ(layout.BlocksOf(1).size(), 60u);
    EXPECT_EQ(layout.BlocksOf(2).size(), 60u);
    for (const auto& child : layout.Segment()->children) {
        EXPECT_FALSE(child.unknownSize) << child.Name();
    }
    ExpectSoundLayout("HasInfoTracksAndClustersAndNothingElse");
}

TEST_P(LiveFileTest, ItsInfoSaysAllButTheDuration) {
    RegisterAudio();
    OpenLive();
    Write(0, 0, 40 * kMs);
    CloseLive();
    const auto layout = Snapshot();
    Names names;
    for (const auto& child : layout.Segment()->Child(kInfo)->children) {
        names.emplace_back(child.Name());
    }
    EXPECT_EQ(names, IsStrict()
                         ? (Names{"TimestampScale", "MuxingApp", "WritingApp", "DateUTC", "SegmentUUID", "Title"})
                         : (Names{"TimestampScale", "MuxingApp", "WritingApp"}));
}

TEST_P(LiveFileTest, IsOnlyEverWrittenOnAtItsEnd) {
    m_stream.ClearCalls();
    RegisterVideo();
    RegisterAudio();
    OpenLive();
    WriteFrames(0, 60);
    CloseLive();
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 2u) << "asked once, and once more";
    EXPECT_EQ(m_stream.Calls(StreamOperation::SetSize).size(), 0u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Read).size(), 0u);
    UINT64 end = 0;
    for (const auto& write : m_stream.Calls(StreamOperation::Write)) {
        EXPECT_EQ(write.position, end);
        end += write.size;
    }
    EXPECT_EQ(end, m_stream.Bytes().size());
}

TEST_P(LiveFileTest, EachClusterLeavesAsAWholeWhenTheNextOneBegins) {
    RegisterVideo();
    RegisterAudio();
    OpenLive();
    EXPECT_NE(Snapshot().Segment(), nullptr) << "the head is there before the first packet";
    EXPECT_EQ(Snapshot().tracks.size(), 2u);
    WriteFrames(0, 25);
    EXPECT_THAT(Snapshot().clusters, IsEmpty());
    WriteFrames(25, 26);
    EXPECT_EQ(Snapshot().BlocksOf(1).size(), 25u);
    EXPECT_THAT(Snapshot().cuts, IsEmpty());
    CloseLive();
    EXPECT_EQ(Snapshot().BlocksOf(1).size(), 26u);
}

TEST_P(LiveFileTest, TheLengthWrittenSoFarGoesOn) {
    RegisterAudio();
    OpenLive();
    Write(0, 0, 40 * kMs);
    EXPECT_EQ(m_writer.duration(), 40e6);
    Write(0, 40 * kMs, 80 * kMs);
    EXPECT_EQ(m_writer.duration(), 80e6);
    CloseLive();
}

TEST_P(LiveFileTest, OneRefusalMakesNoLiveFile) {
    m_stream.ClearFailures();
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    RegisterAudio();
    OpenLive();
    Write(0, 0, 40 * kMs);
    Finish();
    EXPECT_FALSE(Snapshot().Segment()->unknownSize);
    EXPECT_NE(Snapshot().Segment()->Child(kSeekHead), nullptr);
}

TEST_P(LiveFileTest, TheNextFileIsAskedAnew) {
    RegisterAudio();
    OpenLive();
    Write(0, 0, 40 * kMs);
    CloseLive();
    m_stream.ClearFailures();
    m_stream.SetBytes({});
    RegisterAudio();
    OpenLive();
    Write(0, 0, 40 * kMs);
    Finish();
    EXPECT_FALSE(Snapshot().Segment()->unknownSize);
}

TEST_P(LiveFileTest, ALostClusterIsNotThereAndTheNextOneIs) {
    RegisterVideo();
    RegisterAudio();
    OpenLive();
    m_stream.FailNth(StreamOperation::Write, 2, STG_E_MEDIUMFULL);
    WriteFrames(0, 75);
    CloseLive();
    const auto layout = Snapshot();
    EXPECT_EQ(layout.clusters.size(), 2u);
    EXPECT_EQ(layout.BlocksOf(1).size(), 50u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 2u) << "not asked again";
    EXPECT_THAT(CheckLayout(layout, {.cut = true, .strict = IsStrict()}), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Profiles, LiveFileTest, testing::Values(MuxProfile_Compatible, MuxProfile_Strict),
                         [](const testing::TestParamInfo<MuxProfile>& param) {
                             return param.param == MuxProfile_Strict ? "Strict" : "Compatible";
                         });

// A player waits for a whole cluster.
class LiveStrictTest : public LiveFileTest {};

TEST_P(LiveStrictTest, AClusterEndsAfterASecondWhereNoKeyframeComes) {
    RegisterVideo();
    OpenLive();
    for (INT64 frame = 0; frame < 60; ++frame) {
        Write(0, frame * 100 * kMs, (frame + 1) * 100 * kMs, frame == 0);
    }
    CloseLive();
    const auto layout = Snapshot();
    std::vector<uint64_t> times;
    for (const auto& cluster : layout.clusters) {
        times.push_back(cluster.timestamp.value_or(1));
    }
    EXPECT_THAT(times, ElementsAre(0, 1000, 2000, 3000, 4000, 5000));
    ExpectSoundLayout("AClusterEndsAfterASecondWhereNoKeyframeComes");
}

INSTANTIATE_TEST_SUITE_P(Profiles, LiveStrictTest, testing::Values(MuxProfile_Strict));

// Nobody will write them: a recording may go on for days.
TEST(LiveCues, AreForgottenWithTheirCluster) {
    mkv::CMkvCues cues;
    cues.keepNone();
    for (UINT64 i = 0; i < 3; ++i) {
        cues.makeRoom();
        cues.announce(i, 1);
        cues.keepAnnounced(i);
    }
    EXPECT_EQ(cues.pointCount(), 0u);
}

} // namespace

// Outputs that cannot seek: the file is written for those who watch it grow.
#include <gmock/gmock.h>

#include <algorithm>

#include "dshow/media_subtypes.h"
#include "tests/mkv/writer_fixture.h"
#include "tests/support/ebml_schema.h"
#include "tests/support/hex_bytes.h"
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
class LiveStrictTest : public LiveFileTest {
  protected:
    static constexpr uint32_t kColour = 0x55b0;

    void AddChapter(INT64 start) {
        records::Chapter chapter;
        chapter.start = start;
        chapter.title = OLESTR("Part");
        EXPECT_EQ(m_writer.chapters().Add(chapter), records::ListChange::Done);
    }
    void AddTag() {
        records::Tag tag;
        tag.name = OLESTR("ARTIST");
        tag.value = OLESTR("Somebody");
        tag.track = MuxTagTrack_All;
        EXPECT_EQ(m_writer.tags().Add(tag), records::ListChange::Done);
    }
    // What is there stays as it is, and what comes is clusters.
    void ExpectOnlyClustersBehind(const Bytes& before) {
        const Bytes after = m_stream.Bytes();
        ASSERT_GT(after.size(), before.size());
        EXPECT_TRUE(std::equal(before.begin(), before.end(), after.begin()));
        const auto layout = Snapshot();
        for (const auto& child : layout.Segment()->children) {
            if (child.offset >= before.size()) {
                EXPECT_EQ(child.Name(), std::string("Cluster"));
            }
        }
    }
    // Element and those below it, by name.
    static bool HasVoid(const test_support::EbmlElement& element) {
        return element.Name() == std::string("Void") || std::ranges::any_of(element.children, HasVoid);
    }
};

TEST_P(LiveStrictTest, ChaptersAndTagsOfTheStartStandInFrontAndWhatComesLaterIsNotWritten) {
    AddChapter(0);
    AddTag();
    RegisterVideo();
    RegisterAudio();
    OpenLive();
    const Bytes head = m_stream.Bytes();
    EXPECT_EQ(NamesIn(Snapshot()), (Names{"Info", "Tracks", "Chapters", "Tags"}));
    WriteFrames(0, 30);
    AddChapter(MuxChapterTime_Now);
    AddChapter(500 * kMs);
    AddTag();
    WriteFrames(30, 60);
    CloseLive();
    const auto layout = Snapshot();
    const test_support::EbmlElement* const chapters = layout.Segment()->Child(kChapters);
    ASSERT_NE(chapters, nullptr);
    EXPECT_EQ(chapters->children.at(0).Children(0xb6).size(), 1u);
    ExpectOnlyClustersBehind(head);
    ExpectSoundLayout("ChaptersAndTagsOfTheStartStandInFront");
}

// A reader gets the header with the keyframe itself.
TEST_P(LiveStrictTest, PrivateDataThatComesWithTheFirstKeyframeHasNoPlace) {
    VideoShape shape;
    Register(VideoInfo2Type(mediasubtype::kAv01, shape, {}));
    OpenLive();
    const Bytes head = m_stream.Bytes();
    EXPECT_FALSE(HasVoid(*Snapshot().Segment()));
    Write(0, 0, 40 * kMs, true, mkv_test::FromHex("12000a0a0000000337f8e6d7c8023203100102"));
    Write(0, 40 * kMs, 80 * kMs, false, mkv_test::FromHex("120032023003"));
    CloseLive();
    ExpectOnlyClustersBehind(head);
    EXPECT_EQ(Snapshot().BlocksOf(1).size(), 2u);
}

TEST_P(LiveStrictTest, ColoursAreThoseThatAreKnownAtTheStart) {
    // Of libx265: BT.2020, PQ, ten bits; its light comes in front of the picture.
    const auto unit = [](const char* hex) { return mkv_test::FromHex(hex); };
    const auto header = mkv_test::ByteStream(
        {unit("40010c01ffff02200000030090000003000003001e959409"),
         unit("42010102200000030090000003000003001ea02083136595952930bc05a848804db080000003008000000c84"),
         unit("4401c073c089")});
    Register(Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, header));
    OpenLive();
    const Bytes head = m_stream.Bytes();
    const auto opened = Snapshot();
    EXPECT_FALSE(HasVoid(*opened.Segment()));
    const test_support::EbmlElement* const video = opened.Segment()->Child(kTracks)->children.at(0).Child(kVideo);
    EXPECT_NE(video->Child(kColour), nullptr);
    Write(0, 0, 40 * kMs, true, mkv_test::ByteStream({unit("4e01900403e8019080"), unit("2801ac76a10f")}));
    CloseLive();
    ExpectOnlyClustersBehind(head);
    EXPECT_EQ(Snapshot().BlocksOf(1).size(), 1u);
}

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

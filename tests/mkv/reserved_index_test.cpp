// The index in front of the clusters: where it lies, what is left of its place, and what failing writes make of it.
#include <gmock/gmock.h>

#include <algorithm>

#include "mkv/reserved_index.h"
#include "tests/mkv/writer_fixture.h"
#include "tests/support/ebml_schema.h"
#include "tests/support/written_files.h"

namespace {

using namespace test_support;
using namespace test_support::ebml_id;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

constexpr UINT64 kRoomy = 4000;

class ReservedIndexTest : public WriterTest {
  protected:
    void OpenWith(UINT64 bytes, REFERENCE_TIME length = 0, MuxProfile profile = MuxProfile_Strict) {
        records::FileOptions options;
        options.profile = profile;
        options.seed = 1;
        options.trackStatistics = false;
        options.indexBytes = bytes;
        options.indexLength = length;
        Open(options);
    }

    // Each frame a keyframe, and so a cue point.
    void WriteFrames(int frames) {
        for (INT64 frame = 0; frame < frames; ++frame) {
            Write(0, frame * 400 * kMs, (frame + 1) * 400 * kMs, true, Bytes(200));
        }
    }

    void WriteFile(UINT64 bytes, int frames = 10) {
        RegisterVideo();
        OpenWith(bytes);
        WriteFrames(frames);
        Finish();
    }

    [[nodiscard]] Names NamesOfChildren() {
        Names names;
        for (const auto& child : File().Segment()->children) {
            if (names.empty() || child.id != kCluster || names.back() != "Cluster") {
                names.push_back(child.Name());
            }
        }
        return names;
    }

    // The bytes that the cues of so many points take.
    [[nodiscard]] UINT64 CuesBytes(int frames) {
        WriteFile(0, frames);
        const Layout file = Snapshot();
        const test_support::EbmlElement* const cues = file.Segment()->Child(kCues);
        const UINT64 bytes = cues->End() - cues->offset;
        m_stream.SetBytes({});
        return bytes;
    }

    // What a reader finds by the seek head: the cues, and each of them leads to a cluster.
    void ExpectIndex(const MatroskaLayout& layout, size_t points) {
        EXPECT_THAT(CheckLayout(layout, {.strict = true}), IsEmpty());
        EXPECT_EQ(layout.cues.size(), points);
        size_t listed = 0;
        for (const auto& entry : layout.seekEntries) {
            listed += entry.targetId == kCues ? 1 : 0;
        }
        EXPECT_EQ(listed, 1u);
    }
};

TEST_F(ReservedIndexTest, TheCuesStandInFrontOfTheClustersAndAVoidIsWhatIsLeft) {
    WriteFile(kRoomy);
    EXPECT_EQ(NamesOfChildren(), (Names{"SeekHead", "Void", "Info", "Tracks", "Cues", "Void", "Cluster"}));
    ExpectIndex(File(), 10);
    const auto& segment = *File().Segment();
    const test_support::EbmlElement& cues = *segment.Child(kCues);
    EXPECT_EQ(segment.Child(kCluster)->offset, cues.offset + kRoomy);
    EXPECT_EQ(segment.End(), m_stream.Bytes().size());
    EXPECT_EQ(m_writer.indexBeyondPlace(), std::nullopt);
}

TEST_F(ReservedIndexTest, TheSameCuesAsAtTheEnd) {
    WriteFile(0);
    const auto atTheEnd = Snapshot();
    const test_support::EbmlElement& first = *atTheEnd.Segment()->Child(kCues);
    m_stream.SetBytes({});
    WriteFile(kRoomy);
    const auto inFront = Snapshot();
    ASSERT_EQ(inFront.cues.size(), atTheEnd.cues.size());
    for (size_t i = 0; i < atTheEnd.cues.size(); ++i) {
        EXPECT_EQ(inFront.cues[i].clusterPosition, atTheEnd.cues[i].clusterPosition + kRoomy);
    }
    EXPECT_EQ(first.End(), atTheEnd.Segment()->End());
}

TEST_F(ReservedIndexTest, WhileItIsRecordedThePlaceIsEmpty) {
    RegisterVideo();
    OpenWith(kRoomy);
    WriteFrames(3);
    const auto layout = Snapshot();
    EXPECT_THAT(CheckLayout(layout, {.cut = true, .strict = true}), IsEmpty());
    const test_support::EbmlElement& place = layout.Segment()->children.at(3);
    EXPECT_EQ(place.Name(), "Void");
    EXPECT_EQ(place.End() - place.offset, kRoomy);
    EXPECT_EQ(layout.Segment()->Child(kCluster)->offset, place.End());
    WriteFrames(1);
    Finish();
}

TEST_F(ReservedIndexTest, APlaceThatFitsToTheByteIsUsedAndOneThatLeavesOneByteIsNot) {
    const UINT64 exact = CuesBytes(10); // positions lie a little further behind, in as many bytes
    struct Case {
        UINT64 bytes;
        bool isInFront;
    };
    for (const auto& [bytes, isInFront] : {Case{exact, true}, Case{exact + 1, false}, Case{exact + 2, true},
                                           Case{exact + 9, true}, Case{exact + 10, true}, Case{exact - 1, false}}) {
        SCOPED_TRACE(bytes - exact);
        m_stream.SetBytes({});
        WriteFile(bytes);
        const auto layout = Snapshot();
        const auto& segment = *layout.Segment();
        EXPECT_EQ(segment.Child(kCues)->offset < segment.Child(kCluster)->offset, isInFront);
        ExpectIndex(layout, 10);
        ASSERT_EQ(m_writer.indexBeyondPlace().has_value(), !isInFront);
        if (!isInFront) {
            EXPECT_EQ(m_writer.indexBeyondPlace()->bytes, exact);
            EXPECT_EQ(m_writer.indexBeyondPlace()->placeBytes, bytes);
        }
    }
}

TEST_F(ReservedIndexTest, AnIndexThatDoesNotFitIsAtTheEndAndThePlaceStaysEmpty) {
    WriteFile(100);
    EXPECT_EQ(NamesOfChildren(), (Names{"SeekHead", "Void", "Info", "Tracks", "Void", "Cluster", "Cues"}));
    ExpectIndex(File(), 10);
    ASSERT_TRUE(m_writer.indexBeyondPlace());
    EXPECT_EQ(m_writer.indexBeyondPlace()->placeBytes, 100u);
}

TEST_F(ReservedIndexTest, AFileWithoutCuesKeepsThePlaceEmpty) {
    RegisterVideo();
    OpenWith(kRoomy);
    Finish();
    KeepFromJudges();
    EXPECT_EQ(Snapshot().Segment()->Child(kCues), nullptr);
    EXPECT_EQ(m_writer.indexBeyondPlace(), std::nullopt);
}

TEST_F(ReservedIndexTest, TheLengthIsEnoughForAKeyframeEachHalfSecond) {
    RegisterVideo();
    RegisterSubtitle();
    OpenWith(0, 3600 * 1000 * kMs);
    for (INT64 i = 0; i < 7200; ++i) {
        Write(0, i * 500 * kMs, (i + 1) * 500 * kMs, true, Bytes(700));
        if (i % 2 == 0) {
            WriteGroup(1, i * 500 * kMs, (i + 1) * 500 * kMs);
        }
    }
    Finish();
    EXPECT_EQ(m_writer.indexBeyondPlace(), std::nullopt);
    ExpectIndex(File(), 7200 + 3600);
    EXPECT_LT(File().Segment()->Child(kCues)->offset, File().Segment()->Child(kCluster)->offset);
}

TEST_F(ReservedIndexTest, TheLengthIsEnoughForPicturesThatAreAllKeyframes) {
    test_support::VideoShape shape;
    Register(VideoInfo2Type(mediasubtype::kFfv1, shape, {}));
    OpenWith(0, 60 * 1000 * kMs);
    for (INT64 i = 0; i < 3000; ++i) {
        Write(0, i * 20 * kMs, (i + 1) * 20 * kMs, true, Bytes(300));
    }
    KeepFromJudges(); // the pictures are none
    Finish();
    EXPECT_EQ(m_writer.indexBeyondPlace(), std::nullopt);
    ExpectIndex(Snapshot(), 3000);
}

TEST_F(ReservedIndexTest, TheCompatibleProfileKeepsNoRoom) {
    RegisterVideo();
    OpenWith(kRoomy, 0, MuxProfile_Compatible);
    WriteFrames(3);
    Finish();
    EXPECT_EQ(NamesOfChildren(), (Names{"SeekHead", "Void", "Info", "Void", "Tracks", "Cluster", "Cues"}));
}

TEST_F(ReservedIndexTest, AnOutputThatCannotSeekHasNoRoom) {
    KeepFromJudges();
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    RegisterVideo();
    OpenWith(kRoomy);
    WriteFrames(3);
    m_writer.Close();
    m_writer.detach();
    m_io.releaseStream();
    const Layout file = Snapshot();
    for (const auto& child : file.Segment()->children) {
        EXPECT_NE(child.Name(), "Void");
    }
}

// ---- Writes that fail ----------------------------------------------------------------------------------------------

TEST_F(ReservedIndexTest, AnyWriteThatFailsOnceCostsAClusterAtMostAndNeverTheIndex) {
    KeepFromJudges();
    m_stream.ClearCalls();
    WriteFile(kRoomy);
    const size_t writes = m_stream.Calls(StreamOperation::Write).size();
    for (size_t n = 1; n <= writes; ++n) {
        SCOPED_TRACE(n);
        m_stream.ClearFailures();
        m_stream.SetBytes({});
        m_stream.AnswerWrites(n, true, STG_E_MEDIUMFULL, 50);
        WriteFile(kRoomy);
        const auto layout = Snapshot();
        EXPECT_GE(layout.BlocksOf(1).size(), 9u);
        ExpectIndex(layout, layout.BlocksOf(1).size());
    }
}

// What is not taken at all leaves a file that readers skip through, wherever the output gives up.
TEST_F(ReservedIndexTest, WhereverTheWritesEndTheClustersThatWereWrittenAreRead) {
    KeepFromJudges();
    m_stream.ClearCalls();
    WriteFile(kRoomy);
    const size_t writes = m_stream.Calls(StreamOperation::Write).size();
    constexpr size_t kHeadWrites = 3; // the last of them is the place
    for (size_t n = kHeadWrites + 1; n <= writes; ++n) {
        SCOPED_TRACE(n);
        m_stream.ClearFailures();
        m_stream.SetBytes({});
        m_stream.FailFrom(StreamOperation::Write, n, STG_E_MEDIUMFULL);
        WriteFile(kRoomy);
        const auto layout = Snapshot();
        EXPECT_EQ(layout.clusters.size(), std::min<size_t>(n - 1 - kHeadWrites, 10));
        EXPECT_THAT(layout.problems, IsEmpty());
        EXPECT_THAT(layout.cuts, IsEmpty());
    }
}

// Each write of Stop alone, as a machine that loses its power between them leaves them.
TEST_F(ReservedIndexTest, BetweenAnyTwoWritesOfStopTheFileIsRead) {
    KeepFromJudges();
    RegisterVideo();
    OpenWith(kRoomy);
    WriteFrames(10);
    Bytes file = m_stream.Bytes();
    m_stream.KeepWrites();
    Finish();
    bool hasCues = false;
    for (const KeptWrite& write : m_stream.Writes()) {
        const auto end = static_cast<size_t>(write.position) + write.bytes.size();
        file.resize(std::max(file.size(), end));
        std::ranges::copy(write.bytes, file.begin() + static_cast<ptrdiff_t>(write.position));
        const auto layout = ReadLayout(file);
        EXPECT_THAT(layout.problems, IsEmpty()) << "a write at " << write.position;
        EXPECT_EQ(layout.clusters.size(), 10u) << "a write at " << write.position;
        hasCues = hasCues || !layout.cues.empty();
        EXPECT_EQ(layout.cues.size(), hasCues ? 10u : 0u) << "a write at " << write.position;
    }
    EXPECT_TRUE(hasCues);
}

} // namespace

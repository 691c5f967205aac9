// The finished file: which elements, in which order, with which values.
#include <set>

#include "mkv/segment_info.h"
#include "tests/mkv/writer_fixture.h"
#include "win/module_version.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;

class FileLayoutTest : public WriterTest {
  protected:
    std::vector<std::string> TopLevelNames() {
        std::vector<std::string> names;
        for (const EbmlElement& child : File().Segment()->children) {
            names.push_back(child.Name());
        }
        return names;
    }

    std::vector<uint32_t> SeekHeadTargets() {
        std::vector<uint32_t> targets;
        for (const auto& entry : File().seekEntries) {
            targets.push_back(entry.targetId);
        }
        return targets;
    }

    MuxAttachment TextFile() {
        static char s_mimeType[] = "text/plain";
        static BYTE s_data[] = {'h', 'i'};
        return {m_fileName.Get(), nullptr, s_mimeType, sizeof(s_data), s_data, 77};
    }

    win::Bstr m_fileName{WideStringView(OLESTR("read me.txt"))};
};

using Names = std::vector<std::string>;
using Targets = std::vector<uint32_t>;

TEST_F(FileLayoutTest, OrderOfTheTopLevelElementsAndOfTheSeekHead) {
    RegisterVideo();
    m_writer.addAttachment(TextFile());
    Open();
    Write(0, 0, 40 * kMs, true);
    EXPECT_EQ(TopLevelNames(), (Names{"SeekHead", "Void", "Info", "Void", "Tracks", "Attachments", "Cluster", "Cues"}));
    EXPECT_EQ(SeekHeadTargets(), (Targets{kTracks, kAttachments, kInfo, kCues}));
}

TEST_F(FileLayoutTest, SeekHeadAndInfoLieInTheirPlaces) {
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    const EbmlElement& segment = *File().Segment();
    ASSERT_GE(segment.children.size(), 5u);
    EXPECT_EQ(segment.children[0].offset, 49u);
    EXPECT_EQ(segment.children[1].End(), 352u);
    EXPECT_EQ(segment.children[2].offset, 352u);
    EXPECT_EQ(segment.children[3].End(), 655u);
    EXPECT_EQ(segment.children[4].offset, 655u);
}

TEST_F(FileLayoutTest, WithoutAttachmentsThereIsNoAttachmentsElementAndNoSeekHeadEntry) {
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    EXPECT_EQ(Element({kAttachments}), nullptr);
    EXPECT_EQ(SeekHeadTargets(), (Targets{kTracks, kInfo, kCues}));
}

TEST_F(FileLayoutTest, WithoutACuePointThereIsNoCuesElementAndNoSeekHeadEntry) {
    RegisterAudio();
    Open();
    Write(0, 0, 40 * kMs, true);
    EXPECT_EQ(Element({kCues}), nullptr);
    EXPECT_EQ(SeekHeadTargets(), (Targets{kTracks, kInfo}));
}

TEST_F(FileLayoutTest, TheSegmentReachesToTheEndOfTheFile) {
    RegisterVideo();
    m_writer.addAttachment(TextFile());
    Open();
    for (INT64 frame = 0; frame < 100; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 10 == 0);
    }
    const EbmlElement& segment = *File().Segment();
    EXPECT_FALSE(segment.unknownSize);
    EXPECT_EQ(segment.sizeLength, 5u);
    EXPECT_EQ(segment.End(), m_stream.Bytes().size());
}

TEST_F(FileLayoutTest, WithoutTracksNothingPointsAtThem) {
    Open();
    EXPECT_EQ(Element({kTracks}), nullptr);
    ASSERT_EQ(File().seekEntries.size(), 1u);
    EXPECT_EQ(File().seekEntries[0].targetId, kInfo);
}

// ---- Info ----------------------------------------------------------------------------------------------------------

TEST_F(FileLayoutTest, InfoHoldsScaleDurationAndTheTwoApplications) {
    RegisterAudio();
    Open();
    Write(0, 0, 25 * kMs / 2);
    const EbmlElement* const info = Element({kInfo});
    ASSERT_NE(info, nullptr);
    Names names;
    for (const EbmlElement& child : info->children) {
        names.push_back(child.Name());
    }
    EXPECT_EQ(names, (Names{"TimestampScale", "MuxingApp", "WritingApp", "Duration"}));
    EXPECT_EQ(File().timestampScaleNs, 1000000u);
    EXPECT_EQ(File().duration, 12.5);
    EXPECT_EQ(File().muxingApp, "libmatroska 1.4.1");
    EXPECT_EQ(File().writingApp, "Quorlex Matroska Muxer " + win::ModuleVersionText());
}

TEST_F(FileLayoutTest, DurationIsWrittenEvenWhenNoPacketArrived) {
    RegisterAudio();
    Open();
    EXPECT_EQ(File().duration, 0.0);
}

TEST_F(FileLayoutTest, DurationIsTheLargestEndTimeInMillisecondsWithFractions) {
    RegisterVideo();
    RegisterAudio();
    Open();
    Write(0, 0, 40 * kMs, true);
    Write(1, 0, 100 * kMs + 1234);
    Write(0, 40 * kMs, 80 * kMs);
    EXPECT_EQ(m_writer.duration(), 100123400.0);
    EXPECT_EQ(File().duration, 100.1234);
    EXPECT_EQ(m_writer.duration(), 100123400.0); // still readable when the file is closed
}

TEST_F(FileLayoutTest, DurationKeepsItsFractionsAfterFourHours) {
    constexpr INT64 kFourHours = 4 * 3600 * 1000 * kMs;
    RegisterAudio();
    Open();
    Write(0, kFourHours, kFourHours + 3);
    EXPECT_EQ(File().duration, 14400000.0003);
    EXPECT_EQ(Element({kInfo, kDuration})->dataSize, 8u);
}

TEST_F(FileLayoutTest, EachOpenBeginsWithNoDuration) {
    RegisterAudio();
    Open();
    Write(0, 0, 5000 * kMs);
    Finish();
    RegisterAudio();
    Open();
    EXPECT_EQ(m_writer.duration(), 0.0);
    EXPECT_EQ(File().duration, 0.0);
}

// ---- Lifetime ------------------------------------------------------------------------------------------------------

TEST_F(FileLayoutTest, CloseForgetsTheTracksAndDetachTheOutput) {
    RegisterAudio();
    Open();
    EXPECT_TRUE(m_writer.isOpen());
    m_writer.Close();
    EXPECT_TRUE(m_writer.isOpen());
    const size_t bytes = m_stream.Bytes().size();
    Write(0, 0, 10 * kMs);
    m_writer.Close();
    EXPECT_EQ(m_stream.Bytes().size(), bytes);
    m_writer.detach();
    EXPECT_FALSE(m_writer.isOpen());
    Open();
    Finish();
    EXPECT_TRUE(Snapshot().tracks.empty());
}

TEST_F(FileLayoutTest, ClosingAWriterThatIsNotOpenDoesNothing) {
    RegisterAudio();
    m_writer.Close();
    m_writer.detach();
    EXPECT_TRUE(m_stream.Calls().empty());
}

TEST_F(FileLayoutTest, PacketsBeforeOpenAreDropped) {
    RegisterAudio();
    Write(0, 0, 10 * kMs);
    EXPECT_TRUE(m_stream.Calls().empty());
}

TEST_F(FileLayoutTest, TheSecondFileIsAsTheFirst) {
    std::vector<size_t> sizes;
    for (int file = 0; file < 2; ++file) {
        RegisterVideo();
        Open();
        Write(0, -40 * kMs, 0, true);
        Write(0, 0, 40 * kMs, true);
        Finish();
        const auto layout = Snapshot();
        EXPECT_TRUE(test_support::CheckLayout(layout).empty());
        ASSERT_EQ(layout.BlocksOf(1).size(), 2u);
        EXPECT_EQ(layout.BlocksOf(1)[0].time, 0);
        EXPECT_EQ(layout.BlocksOf(1)[1].time, 40);
        EXPECT_EQ(layout.cues.size(), 2u);
    }
}

TEST_F(FileLayoutTest, TimeOffsetsAreForgottenAtClose) {
    RegisterAudio();
    Open();
    Write(0, -1000 * kMs, 0);
    Finish();
    RegisterAudio();
    Open();
    Write(0, 500 * kMs, 600 * kMs);
    ASSERT_EQ(File().BlocksOf(1).size(), 1u);
    EXPECT_EQ(File().BlocksOf(1)[0].time, 500);
}

TEST_F(FileLayoutTest, AbandoningAnOpenFileWritesNothing) {
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    Write(0, 40 * kMs, 80 * kMs, true);
    const size_t calls = m_stream.Calls().size();
    m_writer.abandon();
    EXPECT_FALSE(m_writer.isOpen());
    EXPECT_EQ(m_stream.Calls().size(), calls);
}

TEST_F(FileLayoutTest, DestroyingAnOpenWriterLeaksNothing) {
    CMkvWriter writer;
    m_io.setStream(&m_stream);
    writer.registerTrack(CinepakType().Get(), Row().Get());
    writer.Open(&m_io);
    const BYTE data[] = {1, 2, 3};
    writer.WritePacket({0, 400000, data, 3, true, 0, false});
    m_io.releaseStream();
}

} // namespace

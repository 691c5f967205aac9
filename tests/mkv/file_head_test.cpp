// The head of a file as it is when it has been opened, byte by byte.
#include <algorithm>

#include "mkv/writer_errors.h"
#include "tests/mkv/writer_fixture.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;
using test_support::UnsignedOf;

class FileHeadTest : public WriterTest {
  protected:
    static Bytes Part(const Bytes& bytes, size_t from, size_t size) {
        return {bytes.begin() + static_cast<ptrdiff_t>(from), bytes.begin() + static_cast<ptrdiff_t>(from + size)};
    }
};

constexpr size_t kMatroskaHeadBytes = 40;

TEST_F(FileHeadTest, EbmlHeadSegmentHeadAndTwoPlacesComeFirst) {
    RegisterAudio();
    Open();
    const Bytes bytes = m_stream.Bytes();
    const Bytes ebmlHead{0x1a, 0x45, 0xdf, 0xa3, 0xa3,                               // EBML, 35 bytes
                         0x42, 0x86, 0x81, 0x01,                                     // EBMLVersion 1
                         0x42, 0xf7, 0x81, 0x01,                                     // EBMLReadVersion 1
                         0x42, 0xf2, 0x81, 0x04,                                     // EBMLMaxIDLength 4
                         0x42, 0xf3, 0x81, 0x08,                                     // EBMLMaxSizeLength 8
                         0x42, 0x82, 0x88, 'm',  'a',  't', 'r', 'o', 's', 'k', 'a', // DocType
                         0x42, 0x87, 0x81, 0x02,                                     // DocTypeVersion 2
                         0x42, 0x85, 0x81, 0x02};                                    // DocTypeReadVersion 2
    ASSERT_EQ(ebmlHead.size(), kMatroskaHeadBytes);
    EXPECT_EQ(Part(bytes, 0, ebmlHead.size()), ebmlHead);
    const Bytes segmentHead{0x18, 0x53, 0x80, 0x67, 0x0f, 0xff, 0xff, 0xff, 0xff}; // the size is unknown
    EXPECT_EQ(Part(bytes, 40, 9), segmentHead);
    const Bytes voidHead{0xec, 0x41, 0x2c}; // 300 bytes
    EXPECT_EQ(Part(bytes, 49, 3), voidHead);
    EXPECT_EQ(Part(bytes, 52, 300), Bytes(300, 0));
    EXPECT_EQ(Part(bytes, 352, 3), voidHead);
    EXPECT_EQ(Part(bytes, 355, 300), Bytes(300, 0));
    const Bytes tracks{0x16, 0x54, 0xae, 0x6b};
    EXPECT_EQ(Part(bytes, 655, 4), tracks);
    Finish();
}

TEST_F(FileHeadTest, OutputFormatOneWritesDocTypeWebmAndZeroMatroska) {
    for (const auto& [format, docType] : {std::pair{1u, "webm"}, std::pair{0u, "matroska"}}) {
        m_writer.setOutputFormat(format);
        RegisterAudio();
        Open();
        Finish();
        const auto layout = Snapshot();
        EXPECT_EQ(layout.docType, docType);
        const EbmlElement* const head = layout.tree.Child(kHead);
        ASSERT_NE(head, nullptr);
        EXPECT_EQ(UnsignedOf(layout.file, *head->Child(kDocTypeVersion)), 2u);
        EXPECT_EQ(UnsignedOf(layout.file, *head->Child(kDocTypeReadVersion)), 2u);
    }
}

TEST_F(FileHeadTest, OutputFormatIsMatroskaAtFirstAndIgnoresOtherValues) {
    EXPECT_EQ(m_writer.outputFormat(), 0u);
    m_writer.setOutputFormat(2);
    EXPECT_EQ(m_writer.outputFormat(), 0u);
    m_writer.setOutputFormat(1);
    m_writer.setOutputFormat(0xffffffff);
    EXPECT_EQ(m_writer.outputFormat(), 1u);
}

TEST_F(FileHeadTest, TheFirstClusterIsOpenedAtZeroAndNotWrittenYet) {
    RegisterAudio();
    Open();
    EXPECT_TRUE(Snapshot().clusters.empty());
    ASSERT_EQ(File().clusters.size(), 1u);
    EXPECT_EQ(File().clusters[0].timestamp, 0u);
    EXPECT_TRUE(File().clusters[0].blocks.empty());
}

TEST_F(FileHeadTest, TheFinishedHeadDiffersOnlyInTheSizeAndTheTwoPlaces) {
    RegisterAudio();
    Open();
    const Bytes opened = m_stream.Bytes();
    Write(0, 0, 40 * kMs);
    (void)File();
    const Bytes finished = m_stream.Bytes();
    EXPECT_EQ(Part(finished, 0, 44), Part(opened, 0, 44));
    EXPECT_EQ(Part(finished, 655, opened.size() - 655), Part(opened, 655, opened.size() - 655));
    const UINT64 segmentBytes = finished.size() - 49;
    const Bytes size{0x08, static_cast<BYTE>(segmentBytes >> 24), static_cast<BYTE>(segmentBytes >> 16),
                     static_cast<BYTE>(segmentBytes >> 8), static_cast<BYTE>(segmentBytes)};
    EXPECT_EQ(Part(finished, 44, 5), size);
}

TEST_F(FileHeadTest, OpenWithoutOutputThrows) {
    RegisterAudio();
    try {
        m_writer.Open(nullptr);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const char* text) {
        EXPECT_STREQ(text, "MkvWriter::writeMatroskaHead failed get callback");
        EXPECT_STREQ(text, mkv::kNoOutputError);
    }
    EXPECT_FALSE(m_writer.isOpen());
}

TEST_F(FileHeadTest, AnUnsupportedCodecLeavesTheHeadInTheFile) {
    RegisterAudio();
    Register(test_support::WaveType(SubtypeFromWaveTag(0x0161)));
    EXPECT_EQ(ThrownByOpen(), "CMkvWriter::addTrack unsupported codec");
    EXPECT_EQ(m_stream.Bytes().size(), 655u);
    m_writer.abandon();
    EXPECT_FALSE(m_writer.isOpen());
    EXPECT_EQ(m_stream.Bytes().size(), 655u);
}

TEST_F(FileHeadTest, AnUnsupportedMajorTypeLeavesTheHeadInTheFile) {
    Register(test_support::MediaTypeValue(MEDIATYPE_Midi, GUID_NULL, GUID_NULL));
    EXPECT_EQ(ThrownByOpen(), "CMkvWriter::getTrackType unsupported type");
    m_writer.abandon();
}

TEST_F(FileHeadTest, AfterAnAbandonedOpenTheWriterWritesTheNextFile) {
    Register(test_support::WaveType(SubtypeFromWaveTag(0x0161)));
    EXPECT_EQ(ThrownByOpen(), mkv::kUnsupportedCodecError);
    m_writer.abandon();
    m_writer.registerTrack(PcmType().Get(), Row().Get());
    Open();
    Write(0, 0, 10 * kMs);
    ASSERT_EQ(File().tracks.size(), 1u);
    EXPECT_EQ(File().tracks[0].codecId, "A_PCM/INT/LIT");
    EXPECT_EQ(File().BlocksOf(1).size(), 1u);
}

TEST_F(FileHeadTest, OpeningAgainWithoutAbandoningLeaksNothing) {
    Register(test_support::WaveType(SubtypeFromWaveTag(0x0161)));
    EXPECT_EQ(ThrownByOpen(), mkv::kUnsupportedCodecError);
    EXPECT_EQ(ThrownByOpen(), mkv::kUnsupportedCodecError);
}

TEST_F(FileHeadTest, TrackTypesByMajorType) {
    EXPECT_EQ(CMkvWriter::getTrackType(CinepakType().Get()), 1);
    EXPECT_EQ(CMkvWriter::getTrackType(PcmType().Get()), 2);
    EXPECT_EQ(CMkvWriter::getTrackType(test_support::TextType().Get()), 17);
    EXPECT_EQ(CMkvWriter::getTrackType(Utf8Type().Get()), 17);
    const test_support::MediaTypeValue stream(MEDIATYPE_Stream, GUID_NULL, GUID_NULL);
    EXPECT_THROW((void)CMkvWriter::getTrackType(stream.Get()), const char*);
}

} // namespace

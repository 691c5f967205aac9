// The head of a strict file while it is recorded and when it is finished.
#include <chrono>
#include <set>

#include "tests/mkv/writer_fixture.h"
#include "tests/support/written_files.h"
#include "win/module_version.h"

namespace {

using namespace test_support::ebml_id;
using test_support::DataOf;
using test_support::EbmlElement;
using test_support::StreamOperation;
using test_support::UnsignedOf;

constexpr uint32_t kSegmentUuid = 0x73a4;
constexpr uint32_t kDateUtc = 0x4461;
constexpr uint32_t kTitle = 0x7ba9;
constexpr size_t kSegmentOffset = 40; // behind the EBML head
constexpr size_t kPlaceOffset = 52;
constexpr size_t kInfoOffset = 308;
constexpr INT64 kMatroskaEpochS = 978307200;

using Names = std::vector<std::string>;

class StrictHeadTest : public WriterTest {
  protected:
    static records::FileOptions Strict(UINT64 seed = 1) {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = seed;
        return options;
    }

    static Bytes Part(const Bytes& bytes, size_t from, size_t size) {
        return {bytes.begin() + static_cast<ptrdiff_t>(from), bytes.begin() + static_cast<ptrdiff_t>(from + size)};
    }

    static Names NamesIn(const EbmlElement& parent) {
        Names names;
        for (const EbmlElement& child : parent.children) {
            names.push_back(child.Name());
        }
        return names;
    }

    static const EbmlElement& InfoOf(const Layout& layout) {
        static const EbmlElement s_none;
        const EbmlElement* const info = layout.Segment() == nullptr ? nullptr : layout.Segment()->Child(kInfo);
        EXPECT_NE(info, nullptr);
        return info == nullptr ? s_none : *info;
    }

    // Of a finished file; empty when Info has no such child.
    static Bytes Value(const Layout& layout, uint32_t id) {
        const EbmlElement* const child = InfoOf(layout).Child(id);
        if (child == nullptr) {
            return {};
        }
        const auto data = DataOf(layout.file, *child);
        return {data.begin(), data.end()};
    }

    // A file with one picture, so far as it is recorded, and when it is finished.
    void Record(const records::FileOptions& options) {
        RegisterVideo();
        Open(options);
        Write(0, 0, 40 * kMs, true);
    }
    Layout Finished(const records::FileOptions& options) {
        Record(options);
        Finish();
        return Snapshot();
    }
};

TEST_F(StrictHeadTest, EbmlHeadSegmentHeadSeekHeadPlaceAndInfoComeFirst) {
    Record(Strict());
    const Bytes bytes = m_stream.Bytes();
    EXPECT_EQ(Part(bytes, 32, 8), (Bytes{0x42, 0x87, 0x81, 0x04,    // DocTypeVersion 4
                                         0x42, 0x85, 0x81, 0x02})); // DocTypeReadVersion 2
    EXPECT_EQ(Part(bytes, kSegmentOffset, 12),
              (Bytes{0x18, 0x53, 0x80, 0x67, 0x01, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff})); // an unknown size
    EXPECT_EQ(Part(bytes, kPlaceOffset, 3), (Bytes{0xec, 0x40, 0xfd}));                         // Void, 253 bytes
    EXPECT_EQ(Part(bytes, kPlaceOffset + 3, 253), Bytes(253, 0));
    EXPECT_EQ(Part(bytes, kInfoOffset, 4), (Bytes{0x15, 0x49, 0xa9, 0x66}));
    const auto layout = Snapshot();
    const size_t infoEnd = static_cast<size_t>(InfoOf(layout).End());
    EXPECT_EQ(Part(bytes, infoEnd - 11, 11), (Bytes{0xec, 0x89, 0, 0, 0, 0, 0, 0, 0, 0, 0})); // for the duration
    EXPECT_EQ(Part(bytes, infoEnd, 4), (Bytes{0x16, 0x54, 0xae, 0x6b}));                      // Tracks
    Finish();
}

TEST_F(StrictHeadTest, ARecordingThatIsCutOffHasItsScaleItsNamesAndItsTracks) {
    records::FileOptions options = Strict();
    options.title = OLESTR("A title");
    Record(options);
    const auto cut = Snapshot();
    test_support::SaveForJudges("StrictHeadTest.ARecordingThatIsCutOff.strict", cut.file,
                                test_support::WrittenFile::CutOnPurpose);
    EXPECT_EQ(NamesIn(*cut.Segment()), (Names{"Void", "Info", "Tracks"}));
    EXPECT_EQ(NamesIn(InfoOf(cut)),
              (Names{"TimestampScale", "MuxingApp", "WritingApp", "DateUTC", "SegmentUUID", "Title", "Void"}));
    EXPECT_EQ(cut.timestampScaleNs, 1000000u);
    EXPECT_EQ(cut.muxingApp, "libebml v1.4.4 + libmatroska v1.7.1");
    ASSERT_EQ(win::ModuleVersionText(), ""); // this program has none
    EXPECT_EQ(cut.writingApp, "Quorlex Matroska Muxer");
    EXPECT_EQ(cut.tracks.size(), 1u);
    Finish();
}

TEST_F(StrictHeadTest, TheFinishedHeadDiffersInSizeSeekHeadAndDurationAlone) {
    Record(Strict());
    const Bytes opened = m_stream.Bytes();
    Write(0, 40 * kMs, 80 * kMs + 5000);
    const auto& layout = File();
    const Bytes finished = m_stream.Bytes();
    EXPECT_EQ(Part(finished, 0, kSegmentOffset + 4), Part(opened, 0, kSegmentOffset + 4));
    Bytes size{0x01};
    for (int shift = 48; shift >= 0; shift -= 8) {
        size.push_back(static_cast<BYTE>((finished.size() - kPlaceOffset) >> shift));
    }
    EXPECT_EQ(Part(finished, kSegmentOffset + 4, 8), size);
    const size_t infoEnd = static_cast<size_t>(InfoOf(layout).End());
    EXPECT_EQ(Part(finished, kInfoOffset, infoEnd - 11 - kInfoOffset),
              Part(opened, kInfoOffset, infoEnd - 11 - kInfoOffset));
    EXPECT_EQ(Part(finished, infoEnd, opened.size() - infoEnd), Part(opened, infoEnd, opened.size() - infoEnd));
    EXPECT_EQ(NamesIn(InfoOf(layout)).back(), "Duration");
    ASSERT_TRUE(layout.duration.has_value());
    EXPECT_NEAR(*layout.duration, 80.5, 0.5) << "to the end of the last block";
    EXPECT_EQ(InfoOf(layout).children.back().dataSize, 8u);
}

TEST_F(StrictHeadTest, TheSeekHeadListsTheElementsInTheirOrderAndLeavesAVoid) {
    static char s_mimeType[] = "text/plain";
    static BYTE s_data[] = {'h', 'i'};
    const win::Bstr fileName{WideStringView(OLESTR("note.txt"))};
    m_writer.addAttachment({fileName.Get(), nullptr, s_mimeType, sizeof(s_data), s_data, 77});
    Record(Strict());
    std::vector<uint32_t> targets;
    for (const auto& entry : File().seekEntries) {
        targets.push_back(entry.targetId);
    }
    ASSERT_GE(targets.size(), 4u);
    EXPECT_EQ(std::vector<uint32_t>(targets.begin(), targets.begin() + 4),
              (std::vector<uint32_t>{kInfo, kTracks, kAttachments, kCues}));
    const auto& children = File().Segment()->children;
    EXPECT_EQ(children[0].id, kSeekHead);
    EXPECT_EQ(children[0].offset, kPlaceOffset);
    EXPECT_EQ(children[1].id, kVoid);
    EXPECT_EQ(children[1].End(), kInfoOffset);
}

TEST_F(StrictHeadTest, AFileWithoutAnyBlockHasNoDuration) {
    RegisterAudio();
    Open(Strict());
    EXPECT_FALSE(File().duration.has_value());
    EXPECT_EQ(NamesIn(InfoOf(File())).back(), "Void");
}

TEST_F(StrictHeadTest, ATitleIsWrittenWholeAndAnEmptyOneNotAtAll) {
    records::FileOptions options = Strict();
    EXPECT_EQ(InfoOf(Finished(options)).Child(kTitle), nullptr);
    options.title = OLESTR("Gr\u00fc\u00dfe \u65e5");
    EXPECT_EQ(Value(Finished(options), kTitle), (Bytes{'G', 'r', 0xc3, 0xbc, 0xc3, 0x9f, 'e', ' ', 0xe6, 0x97, 0xa5}));
    constexpr size_t kLong = 32767;
    options.title.assign(kLong, L'\u65e5');
    const auto layout = Finished(options);
    EXPECT_EQ(Value(layout, kTitle).size(), 3 * kLong);
    EXPECT_TRUE(test_support::CheckLayout(layout).empty());
    EXPECT_EQ(layout.duration, 40);
}

TEST_F(StrictHeadTest, TheSegmentsIdentifierIsAlwaysAnotherAndWithASeedAlwaysTheSame) {
    std::set<Bytes> random;
    for (int i = 0; i < 3; ++i) {
        random.insert(Value(Finished(Strict(0)), kSegmentUuid));
    }
    EXPECT_EQ(random.size(), 3u);
    EXPECT_EQ(random.begin()->size(), 16u);
    const Bytes seeded = Value(Finished(Strict(7)), kSegmentUuid);
    EXPECT_EQ(Value(Finished(Strict(7)), kSegmentUuid), seeded);
    EXPECT_NE(Value(Finished(Strict(8)), kSegmentUuid), seeded);
}

TEST_F(StrictHeadTest, TheDateIsTheTimeOfTheStartOrFixedWithASeed) {
    using namespace std::chrono;
    const auto now = [] { return duration_cast<seconds>(system_clock::now().time_since_epoch()).count(); };
    const auto dateS = [](const Bytes& value) {
        INT64 ns = 0;
        for (const BYTE byte : value) {
            ns = ns * 256 + byte;
        }
        return ns / 1000000000 + kMatroskaEpochS;
    };
    const INT64 before = now();
    const Bytes date = Value(Finished(Strict(0)), kDateUtc);
    ASSERT_EQ(date.size(), 8u);
    EXPECT_LE(before, dateS(date));
    EXPECT_LE(dateS(date), now());
    EXPECT_EQ(Value(Finished(Strict(5)), kDateUtc), Bytes(8, 0)) << "2001-01-01, 00:00:00";
}

TEST_F(StrictHeadTest, WebmHasNoIdentifierOfTheSegment) {
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    Register(test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0')));
    records::FileOptions options = Strict();
    options.title = OLESTR("T");
    Open(options);
    Write(0, 0, 40 * kMs, true);
    EXPECT_EQ(File().docType, "webm");
    EXPECT_EQ(NamesIn(InfoOf(File())),
              (Names{"TimestampScale", "MuxingApp", "WritingApp", "DateUTC", "Title", "Duration"}));
    const EbmlElement* const head = File().tree.Child(kHead);
    EXPECT_EQ(UnsignedOf(File().file, *head->Child(kDocTypeVersion)), 4u);
    EXPECT_EQ(UnsignedOf(File().file, *head->Child(kDocTypeReadVersion)), 2u);
}

TEST_F(StrictHeadTest, ADurationThatIsLostLeavesItsRoomAndAWholeFile) {
    RegisterVideo();
    Open(Strict());
    Write(0, 0, 40 * kMs, true);
    m_stream.ClearCalls();
    // The last cluster, then the duration, which is tried twice.
    m_stream.FailNth(StreamOperation::Write, 2, STG_E_MEDIUMFULL);
    m_stream.FailNth(StreamOperation::Write, 3, STG_E_MEDIUMFULL);
    Finish();
    const auto layout = Snapshot();
    EXPECT_FALSE(layout.duration.has_value());
    EXPECT_TRUE(test_support::CheckLayout(layout).empty());
    EXPECT_EQ(layout.BlocksOf(1).size(), 1u);
}

} // namespace

// The fields that every track entry of the strict profile has.
#include <set>

#include "mkv/writer_errors.h"
#include "tests/mkv/writer_fixture.h"
#include "tests/support/golden_file.h"
#include "tests/support/layout_dump.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;

constexpr uint32_t kFlagEnabled = 0xb9;
constexpr uint32_t kFlagHearingImpaired = 0x55ab;
constexpr uint32_t kFlagVisualImpaired = 0x55ac;
constexpr uint32_t kFlagOriginal = 0x55ae;
constexpr uint32_t kFlagCommentary = 0x55af;
constexpr uint32_t kLanguageTag = 0x22b59d;
constexpr MuxTrackFlags kUnset{0, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};

class StrictTrackEntryTest : public WriterTest {
  protected:
    static test_support::MediaTypeValue Vp8Type() {
        return test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0'));
    }

    void RegisterFlagged(const MuxTrackFlags& flags, const records::CTrackSettingsRow& row = Row(),
                         const test_support::MediaTypeValue& type = PcmType()) {
        m_writer.registerTrack(type.Get(), row.Get(), flags);
    }

    void OpenStrict(UINT64 seed = 1) {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = seed;
        Open(options);
    }

    // Of the track at that position, from 0, in the file as it is.
    const EbmlElement& Entry(size_t position = 0) {
        m_head = Snapshot();
        return *m_head.Segment()->Child(kTracks)->Children(kTrackEntry).at(position);
    }
    // None when it is left out.
    std::optional<uint64_t> Number(const EbmlElement& entry, uint32_t id) {
        const EbmlElement* const child = entry.Child(id);
        return child == nullptr ? std::nullopt : std::optional(test_support::UnsignedOf(m_head.file, *child));
    }
    std::optional<std::string> Text(const EbmlElement& entry, uint32_t id) {
        const EbmlElement* const child = entry.Child(id);
        return child == nullptr ? std::nullopt : std::optional(test_support::TextOf(m_head.file, *child));
    }

    // The language of a file's only track and its tag, as they stand in the file.
    std::pair<std::string, std::string> LanguagesWrittenFor(const records::CTrackSettingsRow& row) {
        RegisterFlagged(kUnset, row);
        OpenStrict();
        const EbmlElement& entry = Entry();
        const std::pair languages(Text(entry, kLanguage).value_or("none"), Text(entry, kLanguageTag).value_or("none"));
        Finish();
        return languages;
    }

    // The lines of the dump that show the tracks.
    static std::string TracksOf(const Layout& layout) {
        test_support::DumpOptions options;
        options.masked = {kTrackUid}; // what else draws identifiers from the seed is not this test's
        const std::string dump = test_support::DumpLayout(layout, options);
        const size_t start = dump.find("\n  Tracks");
        const size_t end = dump.find("\n  Cluster", start);
        return start == std::string::npos ? "no tracks" : dump.substr(start + 1, end - start);
    }

    Layout m_head;
};

TEST_F(StrictTrackEntryTest, UidsAreUniqueAndLarge) {
    for (int track = 0; track < 50; ++track) {
        RegisterFlagged(kUnset);
    }
    OpenStrict(0);
    std::set<uint64_t> uids;
    const Layout layout = Snapshot();
    size_t large = 0;
    for (const auto& track : layout.tracks) {
        EXPECT_NE(track.uid, 0u);
        uids.insert(track.uid);
        large += track.uid > 0xffffffff ? 1 : 0;
    }
    EXPECT_EQ(uids.size(), 50u);
    EXPECT_GT(large, 40u);
}

TEST_F(StrictTrackEntryTest, ASeedGivesTheSameUidsEachTime) {
    std::set<uint64_t> uids;
    for (const UINT64 seed : {5, 5, 6}) {
        RegisterFlagged(kUnset);
        OpenStrict(seed);
        uids.insert(Number(Entry(), kTrackUid).value_or(0));
        Finish();
    }
    EXPECT_EQ(uids.size(), 2u);
}

TEST_F(StrictTrackEntryTest, ForcedIsAFlagOfItsOwn) {
    MuxTrackFlags forced = kUnset;
    forced.forced = MuxFlag_On;
    MuxTrackFlags notForced = kUnset;
    notForced.forced = MuxFlag_Off;
    RegisterFlagged(forced, Row(OLESTR("English"), OLESTR(""), 0));
    RegisterFlagged(notForced, Row(OLESTR("English"), OLESTR(""), 200));
    RegisterFlagged(kUnset, Row(OLESTR("English"), OLESTR(""), 1));
    OpenStrict();
    // Written whatever they are, so that nobody has to know the format's defaults.
    const std::pair<uint64_t, uint64_t> expected[] = {{0, 1}, {1, 0}, {1, 0}};
    for (size_t track = 0; track < 3; ++track) {
        EXPECT_EQ(Number(Entry(track), kFlagDefault), expected[track].first) << track;
        EXPECT_EQ(Number(Entry(track), kFlagForced), expected[track].second) << track;
        EXPECT_EQ(Number(Entry(track), kFlagEnabled), 1u) << track;
        EXPECT_EQ(Number(Entry(track), kFlagLacing), 0u) << track;
    }
}

TEST_F(StrictTrackEntryTest, TheOtherFlagsAreWrittenWhenTheyAreSet) {
    RegisterFlagged({0, MuxFlag_Unset, MuxFlag_On, MuxFlag_Off, MuxFlag_Unset, MuxFlag_Unset});
    RegisterFlagged({0, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_On, MuxFlag_Off});
    OpenStrict();
    EXPECT_EQ(Number(Entry(0), kFlagHearingImpaired), 1u);
    EXPECT_EQ(Number(Entry(0), kFlagVisualImpaired), 0u);
    EXPECT_EQ(Number(Entry(0), kFlagOriginal), std::nullopt);
    EXPECT_EQ(Number(Entry(0), kFlagCommentary), std::nullopt);
    EXPECT_EQ(Number(Entry(1), kFlagHearingImpaired), std::nullopt);
    EXPECT_EQ(Number(Entry(1), kFlagVisualImpaired), std::nullopt);
    EXPECT_EQ(Number(Entry(1), kFlagOriginal), 1u);
    EXPECT_EQ(Number(Entry(1), kFlagCommentary), 0u);
}

TEST_F(StrictTrackEntryTest, TheLanguageIsOneCodeWithATagBesideIt) {
    EXPECT_EQ(LanguagesWrittenFor(Row(OLESTR("Chinese"))), (std::pair<std::string, std::string>("chi", "zh")));
    EXPECT_EQ(LanguagesWrittenFor(Row(OLESTR("English"))), (std::pair<std::string, std::string>("eng", "en")));
    EXPECT_EQ(LanguagesWrittenFor(Row(OLESTR("Zuni"))), (std::pair<std::string, std::string>("zun", "zun")));
}

TEST_F(StrictTrackEntryTest, AnUnknownLanguageIsUndetermined) {
    const std::pair<std::string, std::string> undetermined("und", "und");
    EXPECT_EQ(LanguagesWrittenFor(Row(OLESTR("english"))), undetermined);
    EXPECT_EQ(LanguagesWrittenFor(Row(OLESTR(""))), undetermined);
    EXPECT_EQ(LanguagesWrittenFor(records::CTrackSettingsRow(TrackSettings{})), undetermined);
}

TEST_F(StrictTrackEntryTest, NameIsWrittenOnlyWhenThereIsOne) {
    RegisterFlagged(kUnset, Row(OLESTR("English"), OLESTR("Director's comments")));
    RegisterFlagged(kUnset);
    OpenStrict();
    EXPECT_EQ(Text(Entry(0), kName), "Director's comments");
    EXPECT_EQ(Text(Entry(1), kName), std::nullopt);
}

TEST_F(StrictTrackEntryTest, WebmHasNeitherTheTagNorTheNewerFlags) {
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    RegisterFlagged({0, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On}, Row(OLESTR("German")), Vp8Type());
    OpenStrict();
    EXPECT_EQ(Text(Entry(), kLanguage), "ger");
    EXPECT_EQ(Number(Entry(), kFlagForced), 1u);
    for (const uint32_t id :
         {kLanguageTag, kFlagHearingImpaired, kFlagVisualImpaired, kFlagOriginal, kFlagCommentary}) {
        EXPECT_EQ(Entry().Child(id), nullptr) << id;
    }
}

TEST_F(StrictTrackEntryTest, ACodecOrATypeThatCannotBeWrittenIsRefused) {
    test_support::MediaTypeValue unknown = PcmType();
    unknown->subtype = SubtypeFromWaveTag(0x0161);
    RegisterFlagged(kUnset, Row(), unknown);
    const auto thrown = [this] {
        try {
            OpenStrict();
        } catch (const char* text) {
            return std::string(text);
        }
        return std::string("nothing");
    };
    EXPECT_EQ(thrown(), mkv::kUnsupportedCodecError);
    m_writer.abandon();
    unknown->majortype = MEDIATYPE_Stream;
    RegisterFlagged(kUnset, Row(), unknown);
    EXPECT_EQ(thrown(), mkv::kUnsupportedTypeError);
    m_writer.abandon();
    m_io.releaseStream();
}

TEST_F(StrictTrackEntryTest, TracksOfAMatroskaFile) {
    RegisterFlagged(kUnset, Row(OLESTR("Undetermined"), OLESTR("picture"), 1), Vp8Type());
    RegisterFlagged({0, MuxFlag_Off, MuxFlag_On, MuxFlag_Off, MuxFlag_On, MuxFlag_Off},
                    Row(OLESTR("Greek, Modern (1453-)"), OLESTR("Kommentar")));
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    EXPECT_TRUE(test_support::MatchesGolden("mkv", "strict_tracks", TracksOf(File())));
}

TEST_F(StrictTrackEntryTest, TracksOfAWebmFile) {
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    RegisterFlagged({0, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On}, Row(), Vp8Type());
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    EXPECT_TRUE(test_support::MatchesGolden("mkv", "strict_tracks_webm", TracksOf(File())));
}

} // namespace

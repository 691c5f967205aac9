// The fields that every track entry has.
#include <set>

#include "tests/mkv/writer_fixture.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;

class TrackEntryTest : public WriterTest {
  protected:
    // The language of the only track's entry as it stands in the file; none when the element is left out.
    std::optional<std::string> LanguageWrittenFor(const records::CTrackSettingsRow& row) {
        Register(PcmType(), row);
        Open();
        Finish();
        return Snapshot().tracks.at(0).language;
    }
    std::optional<std::string> LanguageWrittenFor(const WCHAR* name) { return LanguageWrittenFor(Row(name)); }
};

TEST_F(TrackEntryTest, NumbersCountFromOneInTheOrderOfRegistration) {
    RegisterAudio();
    RegisterVideo();
    RegisterSubtitle();
    Open();
    ASSERT_EQ(File().tracks.size(), 3u);
    EXPECT_EQ(File().tracks[0].number, 1u);
    EXPECT_EQ(File().tracks[0].type, 2u);
    EXPECT_EQ(File().tracks[1].number, 2u);
    EXPECT_EQ(File().tracks[1].type, 1u);
    EXPECT_EQ(File().tracks[2].number, 3u);
    EXPECT_EQ(File().tracks[2].type, 17u);
    EXPECT_EQ(File().tracks[2].codecId, "S_TEXT/UTF8");
}

TEST_F(TrackEntryTest, UidsAreSmallRandomNumbers) {
    for (int track = 0; track < 50; ++track) {
        RegisterAudio();
    }
    Open();
    std::set<uint64_t> uids;
    KeepFromJudges(); // small numbers repeat sometimes
    for (const auto& track : File().tracks) {
        EXPECT_LE(track.uid, 32767u);
        uids.insert(track.uid);
    }
    EXPECT_GT(uids.size(), 40u);
}

TEST_F(TrackEntryTest, LanguageIsTheCodeOfTheEnglishName) {
    EXPECT_EQ(LanguageWrittenFor(OLESTR("French")), "fre");
    EXPECT_EQ(LanguageWrittenFor(OLESTR("Chinese")), "chi/zho");
    EXPECT_EQ(LanguageWrittenFor(OLESTR("Undetermined")), "und");
}

TEST_F(TrackEntryTest, EnglishIsTheDefaultAndLeftOut) {
    EXPECT_EQ(LanguageWrittenFor(OLESTR("English")), std::nullopt);
}

TEST_F(TrackEntryTest, LanguageNotInTheTableIsWrittenEmpty) {
    EXPECT_EQ(LanguageWrittenFor(OLESTR("english")), "");
    EXPECT_EQ(LanguageWrittenFor(OLESTR("Klingonese")), "");
    EXPECT_EQ(LanguageWrittenFor(OLESTR("")), "");
}

TEST_F(TrackEntryTest, AbsentLanguageIsWrittenEmpty) {
    EXPECT_EQ(LanguageWrittenFor(records::CTrackSettingsRow(TrackSettings{})), "");
}

TEST_F(TrackEntryTest, LanguageOutsideTheAnsiCodePageIsWrittenEmpty) {
    const WCHAR kanji[] = {0x65e5, 0x672c, 0x8a9e, 0};
    const WCHAR loneSurrogate[] = {0xd83d, 0};
    EXPECT_EQ(LanguageWrittenFor(kanji), "");
    EXPECT_EQ(LanguageWrittenFor(loneSurrogate), "");
}

TEST_F(TrackEntryTest, LanguageNamesWithAccentsAreFound) {
    const WCHAR volapuek[] = {'V', 'o', 'l', 'a', 'p', 0xfc, 'k', 0};
    EXPECT_EQ(LanguageWrittenFor(volapuek), "vol");
}

TEST_F(TrackEntryTest, ForcedGoesWithDefault) {
    Register(PcmType(), Row(OLESTR("English"), OLESTR(""), 1));
    Register(PcmType(), Row(OLESTR("English"), OLESTR(""), 0));
    Register(PcmType(), Row(OLESTR("English"), OLESTR(""), 200));
    Open();
    const auto& tracks = File().tracks;
    // Values that are the format's defaults (default 1, forced 0) are left out.
    EXPECT_EQ(tracks.at(0).flagDefault.value_or(1), 1u);
    EXPECT_EQ(tracks.at(0).flagForced, 1u);
    EXPECT_EQ(tracks.at(1).flagDefault, 0u);
    EXPECT_EQ(tracks.at(1).flagForced.value_or(0), 0u);
    EXPECT_EQ(tracks.at(2).flagDefault.value_or(1), 1u);
    EXPECT_EQ(tracks.at(2).flagForced, 1u);
    EXPECT_EQ(tracks.at(0).flagDefault, std::nullopt);
    EXPECT_EQ(tracks.at(1).flagForced, std::nullopt);
}

TEST_F(TrackEntryTest, TheReservedFlagIsNotRead) {
    const records::CTrackSettingsRow row = Row();
    TrackSettings settings = row.Get();
    settings.bReserved = 1;
    Register(PcmType(), records::CTrackSettingsRow(settings));
    Open();
    EXPECT_EQ(File().tracks.at(0).flagForced, std::nullopt);
}

TEST_F(TrackEntryTest, NameIsWrittenOnlyWhenThereIsOne) {
    Register(PcmType(), Row(OLESTR("English"), OLESTR("Director's comments")));
    Register(PcmType(), Row(OLESTR("English"), OLESTR("")));
    Register(PcmType(), records::CTrackSettingsRow(TrackSettings{}));
    Open();
    EXPECT_EQ(File().tracks.at(0).name, "Director's comments");
    EXPECT_EQ(File().tracks.at(1).name, std::nullopt);
    EXPECT_EQ(File().tracks.at(2).name, std::nullopt);
}

TEST_F(TrackEntryTest, NameOfAnyCharactersIsUtf8) {
    const WCHAR name[] = {'a', 0xe9, 0x65e5, 0xd83d, 0xde00, 0xffff, 0};
    Register(PcmType(), Row(OLESTR("English"), name));
    Open();
    EXPECT_EQ(File().tracks.at(0).name, "a\xc3\xa9\xe6\x97\xa5\xf0\x9f\x98\x80\xef\xbf\xbf");
}

TEST_F(TrackEntryTest, ALoneSurrogateInTheNameLosesNothingBehindIt) {
    const WCHAR name[] = {'a', 0xd83d, 'b', 'c', 0};
    Register(PcmType(), Row(OLESTR("English"), name));
    Open();
    EXPECT_EQ(File().tracks.at(0).name, "a\xef\xbf\xbd"
                                        "bc");
}

TEST_F(TrackEntryTest, ElementsWithTheFormatsDefaultsAreLeftOut) {
    Register(PcmType(), Row(OLESTR("English"), OLESTR(""), 1));
    Open();
    const EbmlElement* const entry = Element({kTracks, kTrackEntry});
    ASSERT_NE(entry, nullptr);
    std::set<std::string> names;
    for (const EbmlElement& child : entry->children) {
        names.insert(child.Name());
    }
    EXPECT_EQ(names, (std::set<std::string>{"TrackNumber", "TrackUID", "TrackType", "FlagForced", "CodecID", "Audio"}));
}

TEST_F(TrackEntryTest, RowAndTypeAreCopied) {
    {
        auto type = PcmType();
        records::CTrackSettingsRow row = Row(OLESTR("French"), OLESTR("first"));
        Register(type, row);
        type.SetFormat({});
        row = Row(OLESTR("German"), OLESTR("second"));
    }
    Open();
    EXPECT_EQ(File().tracks.at(0).name, "first");
    EXPECT_EQ(File().tracks.at(0).language, "fre");
}

TEST_F(TrackEntryTest, MoreThan127TracksHaveTwoByteNumbersInTheirBlocks) {
    for (int track = 0; track < 130; ++track) {
        RegisterAudio();
    }
    KeepFromJudges(); // small UIDs repeat sometimes
    Open();
    Write(129, 0, 10 * kMs, false, {4, 5});
    Write(126, 0, 10 * kMs);
    ASSERT_EQ(File().tracks.size(), 130u);
    ASSERT_EQ(File().BlocksOf(130).size(), 1u);
    EXPECT_EQ(File().BlocksOf(130)[0].frames.at(0).size(), 2u);
    EXPECT_EQ(File().BlocksOf(127).size(), 1u);
}

TEST_F(TrackEntryTest, ANameOfOneCharacterIsAName) {
    Register(PcmType(), Row(OLESTR("English"), OLESTR("x")));
    Open();
    EXPECT_EQ(File().tracks.at(0).name, "x");
}

} // namespace

// Chapters and tags of strict files: where they stand, what is in them, and what becomes of them when they change.
#include "dshow/media_subtypes.h"
#include "tests/mkv/strict_fixture.h"
#include "tests/support/written_files.h"

namespace {

using namespace test_support::ebml_id;
using records::Chapter;
using records::ListChange;
using records::Tag;
using test_support::DataOf;
using test_support::EbmlElement;
using test_support::StreamOperation;
using test_support::UnsignedOf;

constexpr uint32_t kEdition = 0x45b9;
constexpr uint32_t kEditionUid = 0x45bc;
constexpr uint32_t kAtom = 0xb6;
constexpr uint32_t kChapterUid = 0x73c4;
constexpr uint32_t kTimeStart = 0x91;
constexpr uint32_t kTimeEnd = 0x92;
constexpr uint32_t kHidden = 0x98;
constexpr uint32_t kEnabled = 0x4598;
constexpr uint32_t kDisplay = 0x80;
constexpr uint32_t kString = 0x85;
constexpr uint32_t kLanguage = 0x437c;
constexpr uint32_t kLanguageTag = 0x437d;
constexpr uint32_t kTag = 0x7373;
constexpr uint32_t kTargets = 0x63c0;
constexpr uint32_t kTargetTypeValue = 0x68ca;
constexpr uint32_t kTargetType = 0x63ca;
constexpr uint32_t kTargetTrack = 0x63c5;
constexpr uint32_t kSimple = 0x67c8;
constexpr uint32_t kTagName = 0x45a3;
constexpr uint32_t kTagString = 0x4487;
constexpr uint32_t kTagLanguage = 0x447a;
constexpr uint32_t kTagLanguageTag = 0x447b;

using Names = std::vector<std::string>;

Chapter At(INT64 start, const WCHAR* title, INT32 level = 0) {
    Chapter chapter;
    chapter.start = start;
    chapter.title = title;
    chapter.language = OLESTR("de");
    chapter.level = level;
    return chapter;
}

Tag Named(const WCHAR* name, const WCHAR* value, INT32 track = MuxTagTrack_All, INT32 level = 0) {
    Tag tag;
    tag.name = name;
    tag.value = value;
    tag.track = track;
    tag.level = level;
    return tag;
}

class AnnotationsTest : public StrictTest {
  protected:
    void Add(const Chapter& chapter) { EXPECT_EQ(m_writer.chapters().Add(chapter), ListChange::Done); }
    void Add(const Tag& tag) { EXPECT_EQ(m_writer.tags().Add(tag), ListChange::Done); }

    void OpenWith(bool statistics, bool isWebm = false) {
        RegisterAudio();
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = 1;
        options.trackStatistics = statistics;
        m_writer.setOutputFormat(isWebm ? CMkvWriter::kWebMFormat : CMkvWriter::kMatroskaFormat);
        Open(options);
        Write(0, 0, 20 * kMs, true);
    }

    static Names NamesOf(const Layout& layout) {
        Names names;
        for (const EbmlElement& child : layout.Segment()->children) {
            names.push_back(child.Name());
        }
        return names;
    }
    static std::string TextOf(const Layout& layout, const EbmlElement& parent, uint32_t id) {
        const EbmlElement* const child = parent.Child(id);
        if (child == nullptr) {
            return "-";
        }
        const auto data = DataOf(layout.file, *child);
        return {data.begin(), data.end()};
    }
    static uint64_t NumberOf(const Layout& layout, const EbmlElement& parent, uint32_t id, uint64_t none = 999) {
        const EbmlElement* const child = parent.Child(id);
        return child == nullptr ? none : UnsignedOf(layout.file, *child).value_or(none);
    }
    static const EbmlElement& Edition(const Layout& layout) {
        return *layout.Segment()->Child(kChapters)->Child(kEdition);
    }
    // "title@milliseconds", and parts in brackets behind.
    static std::string Tree(const Layout& layout, const EbmlElement& parent) {
        std::string text;
        for (const auto* const atom : parent.Children(kAtom)) {
            text += text.empty() ? "" : " ";
            for (const auto* const display : atom->Children(kDisplay)) {
                text += TextOf(layout, *display, kString) + "/" + TextOf(layout, *display, kLanguageTag) + "@";
            }
            text += std::to_string(NumberOf(layout, *atom, kTimeStart) / 1000000);
            const std::string parts = Tree(layout, *atom);
            text += parts.empty() ? "" : "(" + parts + ")";
        }
        return text;
    }
    static std::string Tree(const Layout& layout) { return Tree(layout, Edition(layout)); }
    static std::vector<uint64_t> Uids(const Layout& layout) {
        std::vector<uint64_t> uids;
        for (const auto* const atom : Edition(layout).Children(kAtom)) {
            uids.push_back(NumberOf(layout, *atom, kChapterUid));
        }
        return uids;
    }
    std::vector<uint32_t> Listed() {
        std::vector<uint32_t> targets;
        for (const auto& entry : File().seekEntries) {
            targets.push_back(entry.targetId);
        }
        return targets;
    }
};

TEST_F(AnnotationsTest, WhatIsKnownAtTheStartStandsInFrontOfTheClustersAndStaysThere) {
    Add(At(0, OLESTR("Anfang")));
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    OpenWith(false);
    const auto cut = Snapshot();
    test_support::SaveForJudges("AnnotationsTest.ARecordingThatIsCutOff.strict", cut.file,
                                test_support::WrittenFile::CutOnPurpose);
    EXPECT_EQ(NamesOf(cut), (Names{"Void", "Info", "Tracks", "Chapters", "Tags"}));
    EXPECT_EQ(Tree(cut), "Anfang/de@0");
    EXPECT_EQ(NamesOf(File()), (Names{"SeekHead", "Void", "Info", "Tracks", "Chapters", "Tags", "Cluster", "Cues"}));
    EXPECT_EQ(Tree(File()), "Anfang/de@0");
    EXPECT_EQ(Listed(), (std::vector<uint32_t>{kInfo, kTracks, kCues, kChapters, kTags}));
}

TEST_F(AnnotationsTest, WhatChangesIsWrittenAnewAndTheOldPlaceBecomesAVoid) {
    Chapter first = At(0, OLESTR("one"));
    first.uid = 77;
    Add(first);
    Add(At(100, OLESTR("two")));
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    OpenWith(false);
    const auto before = Uids(Snapshot());
    Add(At(10 * kMs, OLESTR("three")));
    Add(Named(OLESTR("TITLE"), OLESTR("Y")));
    const auto& file = File();
    EXPECT_EQ(NamesOf(file),
              (Names{"SeekHead", "Void", "Info", "Tracks", "Void", "Void", "Cluster", "Cues", "Chapters", "Tags"}));
    EXPECT_EQ(Tree(file), "one/de@0 two/de@0 three/de@10");
    const auto after = Uids(file);
    ASSERT_EQ(after.size(), 3u);
    EXPECT_EQ(after[0], 77u);
    EXPECT_EQ(before, (std::vector<uint64_t>{after[0], after[1]})) << "nobody's identifier changes";
    EXPECT_NE(after[2], 0u);
    EXPECT_EQ(file.Segment()->Child(kTags)->Child(kTag)->Children(kSimple).size(), 2u);
    EXPECT_EQ(Listed(), (std::vector<uint32_t>{kInfo, kTracks, kCues, kChapters, kTags}));
}

TEST_F(AnnotationsTest, TagsAndStatisticsAreOneElementBehindTheClusters) {
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    OpenWith(true);
    EXPECT_EQ(NamesOf(File()), (Names{"SeekHead", "Void", "Info", "Tracks", "Void", "Cluster", "Cues", "Tags"}));
    const auto tags = File().Segment()->Child(kTags)->Children(kTag);
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(TextOf(File(), *tags[0]->Child(kSimple), kTagName), "ARTIST");
    EXPECT_EQ(TextOf(File(), *tags[1]->Child(kSimple), kTagName), "BPS");
}

TEST_F(AnnotationsTest, WhatIsClearedWhileRecordingIsGone) {
    Add(At(0, OLESTR("one")));
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    OpenWith(false);
    m_writer.chapters().Clear();
    m_writer.tags().Clear();
    EXPECT_EQ(NamesOf(File()), (Names{"SeekHead", "Void", "Info", "Tracks", "Void", "Void", "Cluster", "Cues"}));
}

TEST_F(AnnotationsTest, MarksBelongToTheirFileAlone) {
    Chapter mark = At(0, OLESTR("mark"));
    mark.isMark = true;
    EXPECT_EQ(m_writer.chapters().Add(mark), ListChange::NoFile);
    Add(At(0, OLESTR("lasting")));
    OpenWith(false);
    Add(mark);
    Finish();
    EXPECT_EQ(Tree(Snapshot()), "lasting/de@0 mark/de@0");
    EXPECT_EQ(m_writer.chapters().Add(mark), ListChange::NoFile);
    EXPECT_EQ(m_writer.chapters().All().size(), 2u) << "they can still be listed";
    EXPECT_EQ(m_writer.chapters().Lasting().size(), 1u);
    OpenWith(false);
    EXPECT_EQ(Tree(File()), "lasting/de@0");
}

TEST_F(AnnotationsTest, PartsTitlesFlagsAndTimesAreWrittenInTheOrderOfTheTimes) {
    Add(At(20 * kMs, OLESTR("late")));
    Chapter whole = At(0, OLESTR("whole"));
    whole.end = 15 * kMs;
    whole.hidden = true;
    whole.disabled = true;
    Add(whole);
    Chapter title = At(0, OLESTR("all"), MuxLevel_FurtherTitle);
    title.language = OLESTR("en-US");
    Add(title);
    Add(At(5 * kMs, OLESTR("b"), 1));
    Add(At(6 * kMs, OLESTR("deep"), 7)); // deeper than it can be
    Add(At(2 * kMs, OLESTR("a"), 1));
    OpenWith(true);
    const auto& file = File();
    EXPECT_EQ(Tree(file), "whole/de@all/en-US@0(a/de@2 b/de@5(deep/de@6)) late/de@20");
    const auto& atom = *Edition(file).Children(kAtom)[0];
    EXPECT_EQ(NumberOf(file, atom, kTimeEnd), 15000000u);
    EXPECT_EQ(NumberOf(file, atom, kHidden), 1u);
    EXPECT_EQ(NumberOf(file, atom, kEnabled), 0u);
    EXPECT_EQ(TextOf(file, *atom.Children(kDisplay)[1], kLanguage), "eng");
    const auto& late = *Edition(file).Children(kAtom)[1];
    EXPECT_EQ(late.Child(kTimeEnd), nullptr);
    EXPECT_EQ(NumberOf(file, late, kHidden), 0u);
    EXPECT_EQ(NumberOf(file, late, kEnabled), 1u);
    EXPECT_NE(NumberOf(file, Edition(file), kEditionUid), 0u);
}

TEST_F(AnnotationsTest, TagsNameTheirTargetTheirTrackAndTheirLanguage) {
    Tag song = Named(OLESTR("TITLE"), OLESTR("T"));
    song.targetType = 30;
    song.target = OLESTR("SONG");
    song.language = OLESTR("ger");
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    Add(Named(OLESTR("SORT_WITH"), OLESTR("Y"), MuxTagTrack_All, 1));
    Add(song);
    Add(Named(OLESTR("SOURCE"), OLESTR("tape"), 0));
    Add(Named(OLESTR("LOST"), OLESTR("no such track"), 5));
    Add(Named(OLESTR("LOST"), OLESTR("with it"), 5, 1));
    OpenWith(false);
    const auto& file = File();
    const auto tags = file.Segment()->Child(kTags)->Children(kTag);
    ASSERT_EQ(tags.size(), 3u);
    EXPECT_EQ(NumberOf(file, *tags[0]->Child(kTargets), kTargetTypeValue), 50u);
    EXPECT_EQ(tags[0]->Child(kTargets)->Child(kTargetTrack), nullptr);
    const auto& artist = *tags[0]->Child(kSimple);
    EXPECT_EQ(artist.Child(kTagLanguageTag), nullptr);
    EXPECT_EQ(TextOf(file, *artist.Child(kSimple), kTagString), "Y");
    EXPECT_EQ(NumberOf(file, *tags[1]->Child(kTargets), kTargetTypeValue), 30u);
    EXPECT_EQ(TextOf(file, *tags[1]->Child(kTargets), kTargetType), "SONG");
    EXPECT_EQ(TextOf(file, *tags[1]->Child(kSimple), kTagLanguage), "ger");
    EXPECT_EQ(TextOf(file, *tags[1]->Child(kSimple), kTagLanguageTag), "de");
    EXPECT_EQ(NumberOf(file, *tags[2]->Child(kTargets), kTargetTrack), file.tracks[0].uid);
}

TEST_F(AnnotationsTest, WebMHasLessToSayOfThem) {
    Add(At(0, OLESTR("one")));
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    Add(Named(OLESTR("SORT_WITH"), OLESTR("Y"), MuxTagTrack_All, 1));
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    Register(test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0')));
    records::FileOptions options;
    options.profile = MuxProfile_Strict;
    Open(options);
    Write(0, 0, 20 * kMs, true);
    const auto& file = File();
    EXPECT_EQ(NamesOf(file), (Names{"SeekHead", "Void", "Info", "Tracks", "Chapters", "Tags", "Cluster", "Cues"}));
    Names names;
    for (const EbmlElement& child : Edition(file).children) {
        names.push_back(child.Name());
    }
    EXPECT_EQ(names, Names{"ChapterAtom"});
    const auto& atom = *Edition(file).Child(kAtom);
    EXPECT_EQ(atom.children.size(), 3u) << "identifier, start and title";
    EXPECT_EQ(TextOf(file, *atom.Child(kDisplay), kLanguage), "ger");
    EXPECT_EQ(atom.Child(kDisplay)->Child(kLanguageTag), nullptr);
    EXPECT_EQ(file.Segment()->Child(kTags)->Child(kTag)->Child(kSimple)->Child(kSimple), nullptr);
}

TEST_F(AnnotationsTest, ACompatibleFileHasNone) {
    Add(At(0, OLESTR("one")));
    Add(Named(OLESTR("ARTIST"), OLESTR("X")));
    RegisterAudio();
    Open();
    Write(0, 0, 20 * kMs, true);
    EXPECT_EQ(File().Segment()->Child(kChapters), nullptr);
    EXPECT_EQ(File().Segment()->Child(kTags), nullptr);
}

TEST_F(AnnotationsTest, WhatAFailedWriteLosesInFrontStandsBehind) {
    KeepFromJudges();
    Add(At(0, OLESTR("one")));
    RegisterAudio();
    m_stream.FailNth(StreamOperation::Write, 3, STG_E_WRITEFAULT); // head, tracks, chapters
    records::FileOptions options;
    options.profile = MuxProfile_Strict;
    Open(options);
    Write(0, 0, 20 * kMs, true);
    Finish();
    const auto file = Snapshot();
    EXPECT_EQ(NamesOf(file), (Names{"SeekHead", "Void", "Info", "Tracks", "Cluster", "Cues", "Chapters", "Tags"}));
    EXPECT_EQ(Tree(file), "one/de@0");
}

} // namespace

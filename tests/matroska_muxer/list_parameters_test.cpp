// Chapters and tags, set and read as an application does, while stopped and while a file is recorded.
#include <gtest/gtest.h>

#include "client/module_config.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/media_types.h"

using namespace test_support;
using client::Chapter;
using client::Tag;

namespace {

constexpr INT64 kMs = 10000;

Chapter At(INT64 start, const WCHAR* title) {
    Chapter chapter;
    chapter.start = start;
    chapter.title = title;
    chapter.language = OLESTR("de");
    return chapter;
}

Tag Named(const WCHAR* name, const WCHAR* value) {
    Tag tag;
    tag.name = name;
    tag.value = value;
    return tag;
}

class ListParameters : public ::testing::Test {
  protected:
    [[nodiscard]] size_t ChapterCount() const {
        Chapter chapter;
        INT32 count = 0;
        while (m_config.GetChapter(count, chapter) == S_OK) {
            ++count;
        }
        return static_cast<size_t>(count);
    }
    [[nodiscard]] std::vector<BYTE> Saved() const {
        MemoryStream stream;
        EXPECT_EQ(S_OK, m_config.Save(&stream, true));
        return stream.Bytes();
    }
    HRESULT SetRaw(const MuxChapter& record) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<MuxChapter*>(&record);
        return m_rig.Config()->SetValue(&MKVMUX_Chapter, &value);
    }
    void Connect() {
        ASSERT_EQ(S_OK, m_config.SetProfile(MuxProfile_Strict));
        ASSERT_EQ(S_OK, m_rig.ConnectOutput());
        ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    }
    // Until all of it is written.
    void Record() {
        ASSERT_EQ(S_OK, m_rig.Pause());
        for (INT64 ms = 0; ms < 100; ms += 20) {
            ASSERT_EQ(S_OK, m_rig.Deliver(0, ms, 20));
        }
        ASSERT_TRUE(m_rig.EndAll());
    }
    // "start in ms", each chapter of the file.
    std::vector<uint64_t> StartsInFile() {
        std::vector<uint64_t> starts;
        const auto layout = m_rig.Layout();
        const auto* const chapters = layout.Segment()->Child(ebml_id::kChapters);
        if (chapters == nullptr) {
            return starts;
        }
        for (const auto* const atom : chapters->Child(0x45b9)->Children(0xb6)) {
            starts.push_back(UnsignedOf(layout.file, *atom->Child(0x91)).value_or(0) / 1000000);
        }
        return starts;
    }

    MuxerRig m_rig;
    client::ModuleConfig m_config{m_rig.Filter()};
};

TEST_F(ListParameters, ChaptersComeBackInTheOrderThatTheyWereAddedIn) {
    Chapter whole = At(5 * kMs, OLESTR("Gr\u00fc\u00dfe"));
    whole.end = 9 * kMs;
    whole.uid = 77;
    whole.hidden = whole.disabled = true;
    Chapter further;
    further.level = MuxLevel_FurtherTitle;
    further.title = OLESTR("Greetings");
    Chapter part = At(6 * kMs, OLESTR(""));
    part.level = 15;
    part.language = OLESTR("English");
    for (const Chapter& chapter : {whole, further, part}) {
        EXPECT_EQ(S_OK, m_config.AddChapter(chapter));
    }
    Chapter read;
    ASSERT_EQ(S_OK, m_config.GetChapter(0, read));
    EXPECT_EQ(whole, read);
    ASSERT_EQ(S_OK, m_config.GetChapter(1, read));
    EXPECT_EQ(further, read);
    ASSERT_EQ(S_OK, m_config.GetChapter(2, read));
    EXPECT_EQ(part, read);
    EXPECT_EQ(E_INVALIDARG, m_config.GetChapter(3, read));
    EXPECT_EQ(E_INVALIDARG, m_config.GetChapter(-1, read));
    EXPECT_EQ(S_OK, m_config.ClearChapters());
    EXPECT_EQ(0u, ChapterCount());
}

TEST_F(ListParameters, TagsComeBackAndAreReplacedByIndex) {
    Tag song = Named(OLESTR("TITLE"), OLESTR("T"));
    song.track = 3;
    song.targetType = 30;
    song.target = OLESTR("SONG");
    song.language = OLESTR("pt-BR");
    EXPECT_EQ(S_OK, m_config.AddTag(Named(OLESTR("ARTIST"), OLESTR("X"))));
    EXPECT_EQ(S_OK, m_config.AddTag(song));
    const win::Bstr name{WideStringView(OLESTR("ACTOR"))};
    MuxTag record{0, MuxTagTrack_All, 0, 0, nullptr, name.Get(), nullptr, nullptr};
    VARIANT value{};
    V_BYREF(&value) = &record;
    EXPECT_EQ(S_OK, m_rig.Config()->SetValue(&MKVMUX_Tag, &value));
    record.index = 2;
    EXPECT_EQ(E_INVALIDARG, m_rig.Config()->SetValue(&MKVMUX_Tag, &value));
    Tag read;
    ASSERT_EQ(S_OK, m_config.GetTag(0, read));
    EXPECT_EQ(Named(OLESTR("ACTOR"), OLESTR("")), read);
    ASSERT_EQ(S_OK, m_config.GetTag(1, read));
    EXPECT_EQ(song, read);
    EXPECT_EQ(S_OK, m_config.ClearTags());
    EXPECT_EQ(E_INVALIDARG, m_config.GetTag(0, read));
}

TEST_F(ListParameters, WhatCannotBeIsRefusedAndChangesNothing) {
    Chapter wrong[9];
    wrong[0].level = 16;
    wrong[1].level = -2;
    wrong[2].start = -1;
    wrong[3].start = 5;
    wrong[3].end = 4;
    wrong[4].title.assign(32768, L'x');
    wrong[5].title = WideString(OLESTR("a\0b"), 3);
    wrong[6].language = OLESTR("no language");
    wrong[7].level = MuxLevel_FurtherTitle; // of none
    wrong[8].start = MAXLONGLONG;
    for (const Chapter& chapter : wrong) {
        EXPECT_EQ(E_INVALIDARG, m_config.AddChapter(chapter)) << &chapter - wrong;
    }
    EXPECT_EQ(E_INVALIDARG, SetRaw({MuxListIndex_Add, 0, 0, -1, 0, 2, 0, nullptr, nullptr}));
    EXPECT_EQ(E_INVALIDARG, SetRaw({MuxListIndex_Add, 0, 0, -1, 0, 0, 2, nullptr, nullptr}));
    EXPECT_EQ(E_INVALIDARG, SetRaw({0, 0, 0, -1, 0, 0, 0, nullptr, nullptr})) << "there is none to replace";
    EXPECT_EQ(E_INVALIDARG, SetRaw({-3, 0, 0, -1, 0, 0, 0, nullptr, nullptr}));
    EXPECT_EQ(0u, ChapterCount());
    Tag nameless;
    EXPECT_EQ(E_INVALIDARG, m_config.AddTag(nameless));
    Tag tag = Named(OLESTR("A"), OLESTR("B"));
    tag.track = -2;
    EXPECT_EQ(E_INVALIDARG, m_config.AddTag(tag));
    tag.track = 0;
    tag.target = OLESTR("\u00c4");
    EXPECT_EQ(E_INVALIDARG, m_config.AddTag(tag));
    tag.target.clear();
    tag.level = 1; // of none
    EXPECT_EQ(E_INVALIDARG, m_config.AddTag(tag));
    VARIANT none{};
    for (const GUID* key : {&MKVMUX_Chapter, &MKVMUX_Tag}) {
        EXPECT_EQ(E_POINTER, m_rig.Config()->SetValue(key, &none));
        EXPECT_EQ(E_POINTER, m_rig.Config()->GetValue(key, &none));
    }
    EXPECT_EQ(S_FALSE, m_config.IsDirty());
}

TEST_F(ListParameters, NumberAndTextOfAllTogetherAreBounded) {
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(S_OK, m_config.AddChapter({}));
    }
    EXPECT_EQ(E_INVALIDARG, m_config.AddChapter({}));
    EXPECT_EQ(10000u, ChapterCount());
    const WideString longest(32767, L'x');
    for (int i = 0; i < 32; ++i) {
        ASSERT_EQ(S_OK, m_config.AddTag(Named(OLESTR("A"), longest.c_str())));
    }
    EXPECT_EQ(E_INVALIDARG, m_config.AddTag(Named(OLESTR("A"), longest.c_str())));
    MemoryStream stream;
    stream.SetBytes(Saved());
    EXPECT_EQ(S_OK, m_config.Load(&stream)) << "what fits is saved, and fits again";
    EXPECT_EQ(10000u, ChapterCount());
}

TEST_F(ListParameters, WhatIsSetIsSavedAndReplacesWhatAnotherFilterHas) {
    const std::vector<BYTE> fresh = Saved();
    ASSERT_EQ(S_OK, m_config.AddChapter(At(kMs, OLESTR("one"))));
    EXPECT_EQ(S_OK, m_config.IsDirty());
    ASSERT_EQ(S_OK, m_config.AddTag(Named(OLESTR("ARTIST"), OLESTR("X"))));
    const std::vector<BYTE> saved = Saved();
    EXPECT_EQ(S_FALSE, m_config.IsDirty());
    MuxerRig other;
    const client::ModuleConfig config(other.Filter());
    ASSERT_EQ(S_OK, config.AddChapter(At(0, OLESTR("gone"))));
    MemoryStream stream;
    stream.SetBytes(saved);
    ASSERT_EQ(S_OK, config.Load(&stream));
    Chapter chapter;
    ASSERT_EQ(S_OK, config.GetChapter(0, chapter));
    EXPECT_EQ(At(kMs, OLESTR("one")), chapter);
    EXPECT_EQ(E_INVALIDARG, config.GetChapter(1, chapter));
    Tag tag;
    ASSERT_EQ(S_OK, config.GetTag(0, tag));
    EXPECT_EQ(Named(OLESTR("ARTIST"), OLESTR("X")), tag);
    MemoryStream again;
    ASSERT_EQ(S_OK, config.Save(&again, true));
    EXPECT_EQ(saved, again.Bytes());
    ASSERT_EQ(S_OK, m_config.ClearChapters());
    ASSERT_EQ(S_OK, m_config.ClearTags());
    EXPECT_EQ(S_OK, m_config.IsDirty());
    EXPECT_EQ(fresh, Saved());
}

TEST_F(ListParameters, AMarkTakesThePositionWrittenSoFar) {
    EXPECT_EQ(VFW_E_WRONG_STATE, m_config.MarkChapter(OLESTR("early"), {}));
    Connect();
    ASSERT_EQ(S_OK, m_config.AddChapter(At(0, OLESTR("Anfang"))));
    (void)Saved();
    ASSERT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(S_OK, m_config.MarkChapter(OLESTR("nothing yet"), OLESTR("en")));
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 0}), StartsInFile());
    Record();
    EXPECT_EQ(1u, ChapterCount()) << "the mark of the file before is gone";
    EXPECT_EQ(S_OK, m_config.MarkChapter(OLESTR("now"), OLESTR("en")));
    REFERENCE_TIME position = 0;
    EXPECT_EQ(S_OK, m_config.GetPosition(position));
    Chapter chapter;
    ASSERT_EQ(S_OK, m_config.GetChapter(1, chapter));
    EXPECT_EQ(position, chapter.start);
    EXPECT_EQ(100 * kMs, chapter.start);
    EXPECT_EQ(E_INVALIDARG, SetRaw({0, 0, MuxChapterTime_Now, -1, 0, 0, 0, nullptr, nullptr}));
    EXPECT_EQ(E_INVALIDARG, SetRaw({MuxListIndex_Add, 1, MuxChapterTime_Now, -1, 0, 0, 0, nullptr, nullptr}));
    EXPECT_EQ(S_FALSE, m_config.IsDirty()) << "a mark is not saved";
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ((std::vector<uint64_t>{0, 100}), StartsInFile());
    EXPECT_EQ(VFW_E_WRONG_STATE, m_config.MarkChapter(OLESTR("late"), {}));
    EXPECT_EQ(2u, ChapterCount());
    MemoryStream stream;
    stream.SetBytes(Saved());
    ASSERT_EQ(S_OK, m_config.Load(&stream));
    EXPECT_EQ(1u, ChapterCount());
}

TEST_F(ListParameters, WhatIsSetWhileRecordingReachesThatFile) {
    Connect();
    Record();
    EXPECT_EQ(S_OK, m_config.AddChapter(At(40 * kMs, OLESTR("later"))));
    EXPECT_EQ(S_OK, m_config.AddTag(Named(OLESTR("ARTIST"), OLESTR("X"))));
    EXPECT_EQ(S_OK, m_config.IsDirty());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ((std::vector<uint64_t>{40}), StartsInFile());
    const auto layout = m_rig.Layout();
    EXPECT_EQ(2u, layout.Segment()->Child(ebml_id::kTags)->Children(0x7373).size()) << "it, and the statistics";
}

} // namespace

// Lists of chapters and tags: bounds, marks, and what a file begins and ends with.
#include "records/record_list.h"

#include <gtest/gtest.h>

#include "records/chapter.h"
#include "records/language_tags.h"
#include "records/tag.h"

namespace {

using records::Chapter;
using records::ListChange;
using records::Tag;

Chapter Titled(const WCHAR* title, INT32 level = MuxLevel_Top) {
    Chapter chapter;
    chapter.title = title;
    chapter.level = level;
    return chapter;
}

Chapter Mark(const WCHAR* title) {
    Chapter chapter = Titled(title);
    chapter.isMark = true;
    return chapter;
}

std::string Titles(const std::vector<Chapter>& chapters) {
    std::string titles;
    for (const Chapter& chapter : chapters) {
        titles += std::string(chapter.title.begin(), chapter.title.end()) + " ";
    }
    return titles;
}

TEST(RecordList, MarksAndWhatBelongsToThemGoWhenTheNextFileBegins) {
    records::CRecordList<Chapter> list;
    EXPECT_EQ(list.Add(Mark(OLESTR("early"))), ListChange::NoFile);
    EXPECT_EQ(list.Add(Titled(OLESTR("a"))), ListChange::Done);
    EXPECT_EQ(Titles(list.BeginFile()), "a ");
    EXPECT_EQ(list.Add(Mark(OLESTR("m"))), ListChange::Done);
    EXPECT_EQ(list.Add(Titled(OLESTR("m2"), MuxLevel_FurtherTitle)), ListChange::Done);
    EXPECT_EQ(list.Add(Titled(OLESTR("m3"), 1)), ListChange::Done);
    EXPECT_EQ(list.Add(Titled(OLESTR("b"))), ListChange::Done);
    EXPECT_EQ(list.Add(Titled(OLESTR("c"), 1)), ListChange::Done);
    EXPECT_EQ(Titles(list.Lasting()), "a b c ");
    EXPECT_EQ(Titles(list.EndFile()), "a m m2 m3 b c ");
    EXPECT_EQ(list.Add(Mark(OLESTR("late"))), ListChange::NoFile);
    EXPECT_EQ(Titles(list.All()), "a m m2 m3 b c ");
    EXPECT_EQ(Titles(list.BeginFile()), "a b c ");
    list.CloseFile();
    EXPECT_EQ(list.Add(Mark(OLESTR("late"))), ListChange::NoFile);
}

TEST(RecordList, WhatNeedsOneBeforeItIsNeverTheFirst) {
    records::CRecordList<Chapter> list;
    EXPECT_EQ(list.Add(Titled(OLESTR("t"), MuxLevel_FurtherTitle)), ListChange::Refused);
    EXPECT_EQ(list.Add(Titled(OLESTR("a"))), ListChange::Done);
    EXPECT_EQ(list.Replace(0, Titled(OLESTR("t"), MuxLevel_FurtherTitle)), ListChange::Refused);
    EXPECT_EQ(list.Replace(1, Titled(OLESTR("b"))), ListChange::Refused);
    EXPECT_EQ(list.ReplaceAll({Titled(OLESTR("t"), MuxLevel_FurtherTitle)}), ListChange::Refused);
    EXPECT_EQ(Titles(list.All()), "a ");
}

TEST(RecordList, TheTextOfAllTogetherIsBoundedWhicheverWayItComes) {
    using List = records::CRecordList<Tag>;
    List list;
    Tag half;
    half.name = WideString(List::kMaxTextLength / 2, L'x');
    EXPECT_EQ(list.Add(half), ListChange::Done);
    EXPECT_EQ(list.Add(half), ListChange::Done);
    EXPECT_EQ(list.Replace(0, half), ListChange::Done) << "what is replaced does not count";
    Tag more = half;
    more.value = OLESTR("y");
    EXPECT_EQ(list.Replace(0, more), ListChange::Refused);
    EXPECT_EQ(list.ReplaceAll({half, more}), ListChange::Refused);
    Tag shorter;
    shorter.name = OLESTR("n");
    EXPECT_EQ(list.Add(shorter), ListChange::Refused);
    EXPECT_EQ(list.ReplaceAll(std::vector<Tag>(List::kMaxCount + 1)), ListChange::Refused);
    EXPECT_EQ(list.ReplaceAll(std::vector<Tag>(List::kMaxCount)), ListChange::Done);
    EXPECT_EQ(list.Add({}), ListChange::Refused);
    EXPECT_FALSE(list.At(List::kMaxCount));
}

std::string CodesOf(const WideString& text) {
    const auto codes = records::FindLanguageCodes(text);
    return codes ? codes->bibliographic + " " + codes->tag : "none";
}

TEST(LanguageTags, TagsCodesAndNamesAreFound) {
    EXPECT_EQ(CodesOf(OLESTR("")), "und und");
    EXPECT_EQ(CodesOf(OLESTR("German")), "ger de");
    EXPECT_EQ(CodesOf(OLESTR("de")), "ger de");
    EXPECT_EQ(CodesOf(OLESTR("ger")), "ger de");
    EXPECT_EQ(CodesOf(OLESTR("DEU")), "ger de");
    EXPECT_EQ(CodesOf(OLESTR("deu-AT")), "ger de-AT");
    EXPECT_EQ(CodesOf(OLESTR("zh-Hant-TW")), "chi zh-Hant-TW");
    EXPECT_EQ(CodesOf(OLESTR("und")), "und und");
    EXPECT_EQ(CodesOf(OLESTR("yue")), "und yue") << "in no list, and a language all the same";
    for (const WCHAR* text : {OLESTR("d"), OLESTR("de-"), OLESTR("de--AT"), OLESTR("-de"), OLESTR("no language"),
                              OLESTR("de-123456789"), OLESTR("123"), OLESTR("d\u00e9")}) {
        EXPECT_EQ(CodesOf(text), "none");
    }
}

} // namespace

// Chapter and tag files as other programs write them, and their mistakes.
#include <gtest/gtest.h>

#include "sources/chapters/chapter_xml.h"
#include "sources/chapters/clock_time.h"
#include "sources/chapters/simple_chapters.h"
#include "sources/chapters/tag_xml.h"
#include "sources/chapters/text_error.h"

namespace chapters {
namespace {

constexpr REFERENCE_TIME kSecond = 10000000;

template <typename Read>
std::string ErrorOf(Read read, const std::string& text) {
    try {
        (void)read(text);
        return {};
    } catch (const TextError& error) {
        return std::to_string(error.Line()) + ": " + error.what();
    }
}

std::string Atom(const std::string& content) {
    return "<Chapters><EditionEntry>\n<ChapterAtom>" + content + "</ChapterAtom></EditionEntry></Chapters>";
}

TEST(ClockTime, ReadsWhatChapterFilesHave) {
    EXPECT_EQ(ParseClockTime("00:00:00.000"), 0);
    EXPECT_EQ(ParseClockTime("01:02:03.5"), 3723 * kSecond + kSecond / 2);
    EXPECT_EQ(ParseClockTime("100:00:00,123456789"), 360000 * kSecond + 1234567);
    EXPECT_EQ(ParseClockTime("02:03"), 123 * kSecond);
    EXPECT_EQ(ParseClockTime("62.5s"), 62 * kSecond + kSecond / 2);
    EXPECT_EQ(ParseClockTime("1500ms"), kSecond * 3 / 2);
    EXPECT_EQ(ParseClockTime("1000ns"), 10);
    for (const char* text : {"", ":", "1", "1.5", "00:60:00", "00:00:60", "1:2:3:4", "00:00:00.", "-1s", "00:00:01x",
                             "99999999999:00:00", "99999999999s", "999999999999:00"}) {
        EXPECT_FALSE(ParseClockTime(text)) << text;
    }
}

TEST(SimpleChapters, TwoLinesEachAreAChapter) {
    const std::string text = "\r\nCHAPTER01=00:00:00.000\r\nCHAPTER01NAME=Intro = 1\r\n\r\n"
                             "CHAPTER2 = 00:01:00,5 \n CHAPTER2NAME=\n";
    ASSERT_TRUE(LooksLikeSimpleChapters(text));
    const auto chapters = ParseSimpleChapters(text);
    ASSERT_EQ(chapters.size(), 2u);
    ASSERT_EQ(chapters[0].titles.size(), 1u);
    EXPECT_EQ(chapters[0].titles[0].text, "Intro = 1");
    EXPECT_EQ(chapters[1].start, 60 * kSecond + kSecond / 2);
    EXPECT_TRUE(chapters[1].titles.empty());
    EXPECT_FALSE(LooksLikeSimpleChapters("<Chapters/>"));
    EXPECT_FALSE(LooksLikeSimpleChapters("CHAPTERS=1"));
}

TEST(SimpleChapters, MistakesAreToldWithTheirLine) {
    const auto read = [](const std::string& text) { return ErrorOf(ParseSimpleChapters, text); };
    EXPECT_EQ(read("CHAPTER01=00:00\n\nCHAPTER02=00:01"), "3: CHAPTER01NAME=... is missing here");
    EXPECT_EQ(read("CHAPTER01=0:0:0\nCHAPTER02NAME=x"), "2: CHAPTER01NAME=... is missing here");
    EXPECT_EQ(read("CHAPTER01=soon\nCHAPTER01NAME=x"), "1: 'soon' is no time (HH:MM:SS.nnn)");
    EXPECT_EQ(read("CHAPTER01=0:0:0\nCHAPTER01NAME=x\nhello\a"), "3: 'hello?' is no line CHAPTERnn=HH:MM:SS.nnn");
    EXPECT_EQ(read("CHAPTER01=0:0:0\nCHAPTER01NAME=" + std::string(40000, 'x')),
              "2: the name has more than 32767 bytes");
}

TEST(ChapterXml, PartsTitlesFlagsAndTimesAreRead) {
    const ChapterFile file = ReadChapterXml(
        "<Chapters>\n<EditionEntry><EditionFlagDefault>0</EditionFlagDefault><EditionUID>5</EditionUID></EditionEntry>"
        "<EditionEntry><EditionFlagDefault>1</EditionFlagDefault><EditionFlagOrdered>1</EditionFlagOrdered>"
        "<ChapterAtom><ChapterUID>7</ChapterUID><ChapterTimeStart>00:00:01</ChapterTimeStart>"
        "<ChapterTimeEnd>00:00:02.5</ChapterTimeEnd><ChapterFlagHidden>1</ChapterFlagHidden>"
        "<ChapterFlagEnabled>0</ChapterFlagEnabled><ChapterPhysicalEquiv>60</ChapterPhysicalEquiv>"
        "<ChapterDisplay><ChapterString> A &amp; B</ChapterString><ChapterLanguage>ger</ChapterLanguage>"
        "<ChapterCountry>at</ChapterCountry></ChapterDisplay>"
        "<ChapterDisplay><ChapterString>C</ChapterString><ChapLanguageIETF>pt-BR</ChapLanguageIETF>"
        "<ChapterLanguage>por</ChapterLanguage></ChapterDisplay>"
        "<ChapterAtom><ChapterTimeStart>00:00:01.5</ChapterTimeStart></ChapterAtom></ChapterAtom>"
        "</EditionEntry></Chapters>");
    source::Chapter whole;
    whole.start = kSecond;
    whole.end = 2 * kSecond + kSecond / 2;
    whole.uid = 7;
    whole.hidden = true;
    whole.enabled = false;
    whole.titles = {{" A & B", "ger"}, {"C", "pt-BR"}};
    source::Chapter part;
    part.level = 1;
    part.start = kSecond + kSecond / 2;
    EXPECT_EQ(file.chapters, (std::vector<source::Chapter>{whole, part}));
    EXPECT_EQ(file.leftOut,
              (std::vector<std::string>{"further editions", "that they are ordered (<EditionFlagOrdered>)",
                                        "<ChapterPhysicalEquiv>"}));
}

TEST(ChapterXml, MistakesAreToldWithTheirLine) {
    const auto read = [](const std::string& text) { return ErrorOf(ReadChapterXml, text); };
    EXPECT_EQ(read("<Tags/>"), "1: <Chapters> is missing here");
    EXPECT_EQ(read("<Chapters>\n<Tag/></Chapters>"), "2: <Tag> is no element of <Chapters>");
    EXPECT_EQ(read(Atom("")), "2: <ChapterTimeStart> is missing in this <ChapterAtom>");
    EXPECT_EQ(read(Atom("\n<ChapterTimeStart>x</ChapterTimeStart>")),
              "3: <ChapterTimeStart>: 'x' is no time (HH:MM:SS.nnnnnnnnn)");
    EXPECT_EQ(read(Atom("<ChapterTimeStart>0:2</ChapterTimeStart><ChapterTimeEnd>0:1</ChapterTimeEnd>")),
              "2: this <ChapterAtom> ends before it starts");
    EXPECT_EQ(read(Atom("<ChapterFlagHidden>2</ChapterFlagHidden>")),
              "2: <ChapterFlagHidden>: '2' is no flag (0 or 1)");
    EXPECT_EQ(read(Atom("<ChapterUID>x</ChapterUID>")), "2: <ChapterUID>: 'x' is no number");
    EXPECT_EQ(read(Atom("<ChapterName/>")), "2: <ChapterName> is no element of <ChapterAtom>");
    EXPECT_EQ(read(Atom("<ChapterDisplay><ChapterLanguage>de utsch</ChapterLanguage></ChapterDisplay>")),
              "2: <ChapterLanguage>: 'de utsch' is no language (such as eng, en or pt-BR)");
    std::string deep = "<ChapterTimeStart>0:0</ChapterTimeStart>";
    for (int i = 0; i < source::kMaxDepth + 1; ++i) {
        deep = "<ChapterTimeStart>0:0</ChapterTimeStart><ChapterAtom>" + deep + "</ChapterAtom>";
    }
    EXPECT_EQ(read(Atom(deep)), "2: it has more than 10000 chapters, or deeper ones than 16");
}

TEST(TagXml, TagsAreReadAndThoseOfSingleTracksCounted) {
    const TagFile file = ReadTagXml(
        "<Tags><Tag><Simple><Name>ARTIST</Name><String>X</String><TagLanguage>ger</TagLanguage>"
        "<DefaultLanguage>1</DefaultLanguage><Simple><Name>SORT_WITH</Name><String>Y</String></Simple></Simple>"
        "<Targets><TargetTypeValue>30</TargetTypeValue><TargetType>SONG</TargetType><TrackUID>0</TrackUID></Targets></"
        "Tag>"
        "<Tag><Targets><TrackUID>5</TrackUID></Targets><Simple><Name>BPS</Name></Simple></Tag>"
        "<Tag><Targets/><Simple><Name>COVER</Name><Binary format=\"hex\">00</Binary></Simple></Tag></Tags>");
    ASSERT_EQ(file.tags.size(), 2u);
    EXPECT_EQ(file.tags[0], (source::Tag{0, 30, "SONG", "ARTIST", "X", "ger"}));
    EXPECT_EQ(file.tags[1], (source::Tag{1, 30, "SONG", "SORT_WITH", "Y", ""}));
    EXPECT_EQ(file.foreign, 1u);
    EXPECT_EQ(file.binary, 1u);
}

TEST(TagXml, MistakesAreToldWithTheirLine) {
    const auto read = [](const std::string& text) { return ErrorOf(ReadTagXml, text); };
    EXPECT_EQ(read("<Chapters/>"), "1: <Tags> is missing here");
    EXPECT_EQ(read("<Tags>\n<Tag><Simple><String>x</String></Simple></Tag></Tags>"),
              "2: <Name> is missing in this <Simple>");
    EXPECT_EQ(read("<Tags><Tag><Targets><Target/></Targets></Tag></Tags>"), "1: <Target> is no element of <Targets>");
    EXPECT_EQ(read("<Tags><Tag><Targets><TargetTypeValue>5000000000</TargetTypeValue></Targets></Tag></Tags>"),
              "1: <TargetTypeValue> is too large");
}

} // namespace
} // namespace chapters

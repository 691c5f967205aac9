#include <gmock/gmock.h>

#include "codecs/webvtt_cue.h"
#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "sources/text/ass_parser.h"
#include "sources/text/srt_parser.h"
#include "sources/text/subtitle_reader.h"
#include "sources/text/subtitle_time.h"
#include "sources/text/text_decoder.h"
#include "sources/text/vtt_parser.h"
#include "tests/sources/base/packet_checks.h"

namespace subtitles {
namespace {

using testing::ElementsAre;

std::string Decoded(const std::string& bytes) {
    return DecodeText(std::vector<BYTE>(bytes.begin(), bytes.end()));
}

TEST(TextDecoder, Utf8IsTakenWithAndWithoutItsMark) {
    EXPECT_EQ(Decoded("\xef\xbb\xbfGr\xc3\xbc\xc3\x9f"), "Gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(Decoded("Gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80"), "Gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80");
    EXPECT_EQ(Decoded(""), "");
}

TEST(TextDecoder, Utf16IsKnownByItsMarkInBothByteOrders) {
    EXPECT_EQ(Decoded(std::string("\xff\xfe\xfc\0=\xd8\0\xde", 8)), "\xc3\xbc\xf0\x9f\x98\x80");
    EXPECT_EQ(Decoded(std::string("\xfe\xff\0\xfc\xd8=\xde\0", 8)), "\xc3\xbc\xf0\x9f\x98\x80");
    EXPECT_EQ(Decoded(std::string("\xff\xfe"
                                  "a\0b",
                                  5)),
              "a\xef\xbf\xbd")
        << "half a unit at the end";
    EXPECT_EQ(Decoded(std::string("\xff\xfe\0\xd8"
                                  "a\0",
                                  6)),
              "\xef\xbf\xbd"
              "a")
        << "half a pair";
}

TEST(TextDecoder, WhatIsNoUtf8IsWindows1252) {
    EXPECT_EQ(Decoded("Gr\xfc\xdf \x80 \x96 \x9f"), "Gr\xc3\xbc\xc3\x9f \xe2\x82\xac \xe2\x80\x93 \xc5\xb8");
    for (const char* const bytes : {"\xc0\xaf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xf8", "\xe2\x82", "\x80"}) {
        EXPECT_NE(Decoded(bytes), bytes) << "overlong, a surrogate, too high, no lead byte, cut off, no lead byte";
    }
}

TEST(TextDecoder, DamagedUtf8WithAMarkLosesOnlyTheDamage) {
    EXPECT_EQ(Decoded("\xef\xbb\xbf"
                      "a\xff"
                      "b\xe2\x82"),
              "a\xef\xbf\xbd"
              "b\xef\xbf\xbd\xef\xbf\xbd");
}

std::vector<std::string> LinesOf(std::string_view text) {
    std::vector<std::string> lines;
    LineReader reader(text);
    while (const auto line = reader.Next()) {
        lines.emplace_back(*line);
    }
    return lines;
}

TEST(TextDecoder, LinesEndInEveryKnownWay) {
    EXPECT_THAT(LinesOf("a\nb\r\nc\rd\n\ne"), ElementsAre("a", "b", "c", "d", "", "e"));
    EXPECT_THAT(LinesOf("a\r"), ElementsAre("a"));
    EXPECT_THAT(LinesOf(""), ElementsAre());
}

TEST(SubtitleTime, IsReadInTheShapesThatFilesHave) {
    EXPECT_EQ(ParseTime("00:00:01,500"), 15'000'000);
    EXPECT_EQ(ParseTime(" 1:02:03.45 "), 37'234'500'000);
    EXPECT_EQ(ParseTime("00:00:01:5"), 15'000'000);
    EXPECT_EQ(ParseTime("00:00:02"), 20'000'000);
    EXPECT_EQ(ParseTime("-00:00:01,001"), -10'010'000);
    EXPECT_EQ(ParseTime("123:00:00,000"), 123 * 36'000'000'000);
    for (const char* const text :
         {"", "x", "00:01", "00:00:", "00:00:01,", "00:00:01,5x", "1234567:00:00", "--0:0:0"}) {
        EXPECT_FALSE(ParseTime(text)) << text;
    }
}

// "abc@10-20" for each event, in milliseconds.
std::vector<std::string> Summary(const std::optional<SubtitleFile>& file) {
    if (!file) {
        return {"refused"};
    }
    SubtitleReader reader(*file);
    std::vector<std::string> texts;
    for (const source::Packet& packet : test_source::ReadAll(reader)) {
        EXPECT_TRUE(packet.hasStop && packet.keyframe);
        texts.push_back(std::string(packet.data.begin(), packet.data.end()) + "@" +
                        std::to_string(packet.start / 10'000) + "-" + std::to_string(packet.stop / 10'000));
    }
    return texts;
}

TEST(SrtParser, ReadsNumbersTimesAndLines) {
    EXPECT_THAT(Summary(ParseSrt("1\n00:00:01,000 --> 00:00:02,500\nHello\nworld\n\n2\n00:00:03,000 --> "
                                 "00:00:04,000 X1:10 Y1:20\n<i>again</i>\n")),
                ElementsAre("Hello\nworld@1000-2500", "<i>again</i>@3000-4000"));
}

TEST(SrtParser, KeepsEmptyLinesInsideATextAndNumbersThatAreText) {
    EXPECT_THAT(Summary(ParseSrt("1\n0:00:01,0 --> 0:00:02,0\none\n\ntwo\n\n2\n0:00:03,0 --> 0:00:04,0\n1984")),
                ElementsAre("one\n\ntwo@1000-2000", "1984@3000-4000"));
}

TEST(SrtParser, WorksWithoutNumbersAndWithoutEmptyLines) {
    EXPECT_THAT(Summary(ParseSrt("0:00:01,0-->0:00:02,0\na\n0:00:03,0 --> 0:00:04,0\nb")),
                ElementsAre("a@1000-2000", "b@3000-4000"));
}

TEST(SrtParser, SortsByStartAndLeavesEmptyTextsOut) {
    EXPECT_THAT(Summary(ParseSrt("0:00:05,0 --> 0:00:06,0\nlate\n\n0:00:01,0 --> 0:00:02,0\nearly\n\n"
                                 "0:00:03,0 --> 0:00:04,0\n\n")),
                ElementsAre("early@1000-2000", "late@5000-6000"));
}

TEST(SrtParser, TimesBelowZeroShiftAllOfThem) {
    EXPECT_THAT(Summary(ParseSrt("-0:00:01,0 --> 0:00:01,0\na\n\n0:00:02,0 --> 0:00:03,0\nb")),
                ElementsAre("a@0-2000", "b@3000-4000"));
}

TEST(SrtParser, AStopBeforeTheStartBecomesTheStart) {
    EXPECT_THAT(Summary(ParseSrt("0:00:02,0 --> 0:00:01,0\na")), ElementsAre("a@2000-2000"));
}

TEST(SrtParser, AnEventWhoseTimesAreDamagedIsLeftOutAndTold) {
    for (const char* const timing : {"0:00:zz --> 0:00:04,0", "x:00:03,0 --> 0:00:04,0", "0:00:03,0 --> "}) {
        const auto file = ParseSrt("1\n0:00:01,0 --> 0:00:02,0\na\n\n2\n" + std::string(timing) +
                                   "\nb\n\n3\n0:00:05,0 --> 0:00:06,0\nc\n");
        EXPECT_THAT(Summary(file), ElementsAre("a@1000-2000", "c@5000-6000")) << timing;
        EXPECT_TRUE(file && file->isDamaged) << timing;
    }
}

TEST(SrtParser, AnArrowInsideATextIsNoDamage) {
    const auto file = ParseSrt("1\n0:00:01,0 --> 0:00:02,0\nLeft --> right\n");
    EXPECT_THAT(Summary(file), ElementsAre("Left --> right@1000-2000"));
    EXPECT_FALSE(file->isDamaged);
}

TEST(SrtParser, LinesThatOnlyLookLikeTimesAreToldAsDamage) {
    const auto file = ParseSrt("0:00:01,0 --> 0:00:02,0\na\n\n0:00:zz --> 0:00:04,0\nb");
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->isDamaged);
    EXPECT_TRUE(FAILED(SubtitleReader(*file).Damage()));
    EXPECT_FALSE(ParseSrt("0:00:01,0 --> 0:00:02,0\na")->isDamaged);
}

TEST(SrtParser, ATextWithoutEventsIsRefused) {
    EXPECT_FALSE(ParseSrt(""));
    EXPECT_FALSE(ParseSrt("hello\nworld"));
}

constexpr const char* kAss = "[Script Info]\r\nTitle: t\r\n\r\n[V4+ Styles]\r\nStyle: Default\r\n\r\n[Events]\r\n"
                             "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\r\n"
                             "Comment: 0,0:00:00.00,0:00:01.00,Default,,0,0,0,,not shown\r\n"
                             "Dialogue: 2,0:00:02.50,0:00:04.00,Default,Bob,1,2,3,fx,Hello, {\\b1}world \r\n"
                             "Dialogue: 0,0:00:01.00,0:00:02.25,Default,,0,0,0,,First\r\n";

TEST(AssParser, EventsBecomeBlocksWithTheirNumberAndWithoutTheirTimes) {
    EXPECT_THAT(Summary(ParseAss(kAss)), ElementsAre("1,0,Default,,0,0,0,,First@1000-2250",
                                                     "0,2,Default,Bob,1,2,3,fx,Hello, {\\b1}world @2500-4000"));
}

TEST(AssParser, TheHeaderIsEverythingButTheDialogue) {
    const auto file = ParseAss(std::string(kAss) + "[Fonts]\r\nfontname: x\r\n");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->format, Format::Ass);
    EXPECT_EQ(file->header,
              "[Script Info]\r\nTitle: t\r\n\r\n[V4+ Styles]\r\nStyle: Default\r\n\r\n[Fonts]\r\nfontname: x\r\n"
              "[Events]\r\nFormat: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\r\n"
              "Comment: 0,0:00:00.00,0:00:01.00,Default,,0,0,0,,not shown\r\n");
}

TEST(AssParser, FieldsMayComeInAnotherOrder) {
    EXPECT_THAT(
        Summary(ParseAss("[Events]\nFormat: Start, End, Style, Layer, Text\nDialogue: 0:00:01.00,0:00:02.00,S,4,a,b")),
        ElementsAre("0,4,S,,,,,,a,b@1000-2000"));
}

TEST(AssParser, OldScriptsAreSsaAndTheirMarkIsTheLayer) {
    const auto file = ParseAss("[Script Info]\nScriptType: v4.00\n[V4 Styles]\nStyle: x\n[Events]\n"
                               "Format: Marked, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
                               "Dialogue: Marked=0,0:00:01.00,0:00:02.00,x,,0,0,0,,a");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->format, Format::Ssa);
    EXPECT_THAT(Summary(file), ElementsAre("0,0,x,,0,0,0,,a@1000-2000"));
}

TEST(AssParser, EventsThatLackFieldsOrTimesAreToldAsDamage) {
    const auto file = ParseAss("[Events]\nDialogue: 0,0:00:01.00,0:00:02.00\nDialogue: 0,x,0:00:02.00,D,,0,0,0,,a\n"
                               "Dialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,kept");
    EXPECT_THAT(Summary(file), ElementsAre("0,0,D,,0,0,0,,kept@1000-2000"));
    EXPECT_TRUE(file->isDamaged);
}

TEST(AssParser, AScriptWithoutEventsIsRefused) {
    EXPECT_FALSE(ParseAss("[Script Info]\nTitle: t\n"));
}

TEST(SubtitleReader, OffersTheTypeThatTheMuxerWritesWithTheHeader) {
    const auto writtenOf = [](const std::optional<SubtitleFile>& file) {
        return media::DescribeCodec(SubtitleReader(*file).Streams().at(0).types.at(0));
    };
    EXPECT_EQ(writtenOf(ParseSrt("0:00:01,0 --> 0:00:02,0\na")).codecId, "S_TEXT/UTF8");
    EXPECT_FALSE(writtenOf(ParseSrt("0:00:01,0 --> 0:00:02,0\na")).codecPrivate);
    const auto ass = writtenOf(ParseAss(kAss));
    EXPECT_EQ(ass.codecId, "S_TEXT/ASS");
    EXPECT_EQ(std::string(ass.codecPrivate->begin(), ass.codecPrivate->end()), ParseAss(kAss)->header);
    EXPECT_EQ(writtenOf(ParseAss("[V4 Styles]\n[Events]\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a")).codecId,
              "S_TEXT/SSA");
}

template <std::optional<SubtitleFile> (*Parse)(std::string_view)>
std::unique_ptr<source::PacketReader> ReaderOf(const test_source::Bytes& bytes) {
    std::optional<SubtitleFile> file = Parse(DecodeText(bytes));
    return file ? std::make_unique<SubtitleReader>(std::move(*file)) : nullptr;
}

test_source::Bytes LongSrt() {
    std::string text;
    for (int i = 0; i < 60; ++i) {
        const std::string second = std::to_string(i / 10) + std::to_string(i % 10);
        text += std::to_string(i) + "\n00:00:" + second + ",000 --> 00:00:" + second + ",900\nGr\xc3\xbc\xc3\x9f\n\n";
    }
    return {text.begin(), text.end()};
}

test_source::Bytes LongAss() {
    std::string text = kAss;
    for (int i = 0; i < 60; ++i) {
        text += "Dialogue: 0,0:00:01.00,0:00:02.25,Default,,0,0,0,,line " + std::to_string(i) + "\r\n";
    }
    return {text.begin(), text.end()};
}

TEST(SrtParser, ReadsWhatATruncatedFileStillHolds) {
    test_source::CheckTruncations(ReaderOf<ParseSrt>, LongSrt(), false);
}

TEST(SrtParser, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf<ParseSrt>, LongSrt());
}

TEST(AssParser, ReadsWhatATruncatedFileStillHolds) {
    test_source::CheckTruncations(ReaderOf<ParseAss>, LongAss(), false);
}

TEST(AssParser, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf<ParseAss>, LongAss());
}

// ---- WebVTT

codecs::WebVttCue CueOf(const SubtitleEvent& event) {
    return codecs::CueOfBoxes({reinterpret_cast<const uint8_t*>(event.text.data()), event.text.size()});
}

// "start-stop text|settings|identifier|comments" in ms.
std::vector<std::string> CuesOf(std::string_view text) {
    std::vector<std::string> cues;
    const auto file = ParseVtt(text);
    for (const SubtitleEvent& event : file ? file->events : std::vector<SubtitleEvent>()) {
        const codecs::WebVttCue cue = CueOf(event);
        cues.push_back(std::to_string(event.start / 10'000) + "-" + std::to_string(event.stop / 10'000) + " " +
                       cue.text + "|" + cue.settings + "|" + cue.identifier + "|" + cue.comments);
    }
    return cues;
}

TEST(VttParser, CuesHaveTheirSettingsIdentifiersAndComments) {
    EXPECT_THAT(
        CuesOf("WEBVTT\n\n"
               "id\n00:01.500 --> 01:00:02.000 line:0 align:start\nHi\nthere\n\n"
               "NOTE one\n\nNOTE two\nlines\n\n\n"
               "00:00:03.000-->00:00:04.000\nplain"),
        ElementsAre("1500-3602000 Hi\nthere|line:0 align:start|id|", "3000-4000 plain|||NOTE one\nNOTE two\nlines"));
}

TEST(VttParser, LinesEndInAnyWay) {
    const auto expected = ElementsAre("0-1000 a\nb||x|", "1000-2000 c|||");
    EXPECT_THAT(CuesOf("WEBVTT\r\n\r\nx\r\n00:00.000 --> 00:01.000\r\na\r\nb\r\n\r\n00:01.000 --> 00:02.000\r\nc\r\n"),
                expected);
    EXPECT_THAT(CuesOf("WEBVTT\r\rx\r00:00.000 --> 00:01.000\ra\rb\r\r00:01.000 --> 00:02.000\rc"), expected);
}

TEST(VttParser, WhatStandsInFrontOfTheFirstCueIsTheHeader) {
    const auto file =
        ParseVtt("WEBVTT - title\nKind: captions\n\nSTYLE\n::cue {}\n\nNOTE x\n\n00:00.000 --> 00:01.000\na");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->header, "WEBVTT - title\nKind: captions\n\nSTYLE\n::cue {}\n\nNOTE x");
    EXPECT_EQ(CueOf(file->events.at(0)).comments, "");
    EXPECT_FALSE(file->isDamaged);
}

TEST(VttParser, TimesInsideATextCountFromItsStart) {
    EXPECT_THAT(CuesOf("WEBVTT\n\n01:00.500 --> 01:02.000\na<01:01.000>b<i>c</i><00:01:01.750>d<00:00.000>e<1"),
                ElementsAre("60500-62000 a<00:00:00.500>b<i>c</i><00:00:01.250>d<00:00:00.000>e<1|||"));
}

TEST(VttParser, ATextWithoutTheSignatureOrACueIsNone) {
    for (const char* text : {"", "WEBVT", "WEBVTTX\n\n00:00.000 --> 00:01.000\na", "WEBVTT\n\nNOTE",
                             "1\n00:00.000 --> 00:01.000\na", "WEBVTT\n\n00:00.000 --> 00:01.000\n\n"}) {
        EXPECT_FALSE(ParseVtt(text)) << text;
    }
}

TEST(VttParser, WhatCannotBeReadIsPassedOverAndTold) {
    for (const char* damaged :
         {"00:00.000 --> x\nlost", "00:00.000 -->\nlost", "id\nx --> 00:01.000\nlost", "STYLE\nlate"}) {
        const auto file = ParseVtt(std::string("WEBVTT\n\n00:00.000 --> 00:01.000\na\n\n") + damaged);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->events.size(), 1u);
        EXPECT_TRUE(file->isDamaged) << damaged;
    }
    const auto large = ParseVtt("WEBVTT\n\nSTYLE\n" + std::string(1024 * 1024, 'x') + "\n\n00:00.000 --> 00:01.000\na");
    ASSERT_TRUE(large);
    EXPECT_EQ(large->header, "WEBVTT");
    EXPECT_TRUE(large->isDamaged);
}

} // namespace
} // namespace subtitles

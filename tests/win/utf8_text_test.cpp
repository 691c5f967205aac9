#include "win/utf8_text.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "win/code_page_text.h"

namespace {

WideString Units(std::initializer_list<int> units) {
    WideString text;
    for (const int unit : units) {
        text += static_cast<WCHAR>(unit);
    }
    return text;
}

TEST(Utf8TextTest, EveryLengthOfSequence) {
    EXPECT_EQ(win::Utf8FromWide(WideString()), "");
    EXPECT_EQ(win::Utf8FromWide(OLESTR("Az~\x7f")), "Az~\x7f");
    EXPECT_EQ(win::Utf8FromWide(Units({0x80, 0x7ff})), "\xc2\x80\xdf\xbf");
    EXPECT_EQ(win::Utf8FromWide(Units({0x800, 0xd7ff, 0xe000, 0xffff})),
              "\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf");
    EXPECT_EQ(win::Utf8FromWide(Units({0xd800, 0xdc00, 0xdbff, 0xdfff})), "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
}

TEST(Utf8TextTest, LoneSurrogatesBecomeReplacementCharactersAndNothingElseIsLost) {
    EXPECT_EQ(win::Utf8FromWide(Units({'a', 0xd83d, 'b'})), "a\xef\xbf\xbd"
                                                            "b");
    EXPECT_EQ(win::Utf8FromWide(Units({'a', 0xde00, 'b'})), "a\xef\xbf\xbd"
                                                            "b");
    EXPECT_EQ(win::Utf8FromWide(Units({'a', 0xd83d})), "a\xef\xbf\xbd");
    EXPECT_EQ(win::Utf8FromWide(Units({0xd83d, 0xd83d, 0xde00})), "\xef\xbf\xbd\xf0\x9f\x98\x80");
    EXPECT_EQ(win::Utf8FromWide(Units({0xde00, 0xd83d})), "\xef\xbf\xbd\xef\xbf\xbd");
}

TEST(Utf8TextTest, TheWayBackGivesEveryCharacterAgainAndReplacesWhatIsNoUtf8) {
    EXPECT_EQ(win::WideFromUtf8(""), WideString());
    const WideString text = Units({'A', 0x80, 0x7ff, 0x800, 0xffff, 0xd83d, 0xde00, 0, 'z'});
    EXPECT_EQ(win::WideFromUtf8(win::Utf8FromWide(text)), text);
    EXPECT_EQ(win::WideFromUtf8("a\xff"
                                "b"),
              Units({'a', 0xfffd, 'b'}));
}

TEST(CodePageTextTest, LengthsAreTheTextsOwnInBothDirections) {
    EXPECT_EQ(win::NarrowFromWide(CP_UTF8, WideString()), "");
    EXPECT_EQ(win::WideFromNarrow(CP_UTF8, ""), WideString());
    EXPECT_EQ(win::NarrowFromWide(CP_THREAD_ACP, Units({'a', 0, 'b'})), std::string("a\0b", 3));
    EXPECT_EQ(win::WideFromNarrow(CP_THREAD_ACP, std::string_view("a\0b", 3)), Units({'a', 0, 'b'}));
    EXPECT_EQ(win::NarrowFromWide(CP_UTF8, Units({0x20ac})), "\xe2\x82\xac");
}

TEST(CodePageTextTest, AnUnknownCodePageGivesNothing) {
    constexpr UINT kNoCodePage = 12345;
    EXPECT_EQ(win::NarrowFromWide(kNoCodePage, OLESTR("a")), "");
    EXPECT_EQ(win::WideFromNarrow(kNoCodePage, "a"), WideString());
}

} // namespace

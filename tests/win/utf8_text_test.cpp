#include "win/utf8_text.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

WideString Units(std::initializer_list<int> units) {
    WideString text;
    for (const int unit : units) {
        text += static_cast<WCHAR>(unit);
    }
    return text;
}

TEST(Utf8TextTest, EveryLengthOfSequence) {
    EXPECT_EQ(mkv::ToUtf8(WideString()), "");
    EXPECT_EQ(mkv::ToUtf8(OLESTR("Az~\x7f")), "Az~\x7f");
    EXPECT_EQ(mkv::ToUtf8(Units({0x80, 0x7ff})), "\xc2\x80\xdf\xbf");
    EXPECT_EQ(mkv::ToUtf8(Units({0x800, 0xd7ff, 0xe000, 0xffff})), "\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf");
    EXPECT_EQ(mkv::ToUtf8(Units({0xd800, 0xdc00, 0xdbff, 0xdfff})), "\xf0\x90\x80\x80\xf4\x8f\xbf\xbf");
}

TEST(Utf8TextTest, LoneSurrogatesBecomeReplacementCharactersAndNothingElseIsLost) {
    EXPECT_EQ(mkv::ToUtf8(Units({'a', 0xd83d, 'b'})), "a\xef\xbf\xbd"
                                                      "b");
    EXPECT_EQ(mkv::ToUtf8(Units({'a', 0xde00, 'b'})), "a\xef\xbf\xbd"
                                                      "b");
    EXPECT_EQ(mkv::ToUtf8(Units({'a', 0xd83d})), "a\xef\xbf\xbd");
    EXPECT_EQ(mkv::ToUtf8(Units({0xd83d, 0xd83d, 0xde00})), "\xef\xbf\xbd\xf0\x9f\x98\x80");
    EXPECT_EQ(mkv::ToUtf8(Units({0xde00, 0xd83d})), "\xef\xbf\xbd\xef\xbf\xbd");
}

} // namespace

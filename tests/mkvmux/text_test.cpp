#include "mkvmux/text.h"

#include <gmock/gmock.h>

namespace mkvmux {
namespace {

TEST(Text, KeepsEveryPlaneBothWays) {
    const std::string utf8 = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xAC";
    EXPECT_EQ(Utf8FromWide(L"a\u00e4\u20ac\U0001F3AC"), utf8);
    EXPECT_EQ(WideFromUtf8(utf8), L"a\u00e4\u20ac\U0001F3AC");
    EXPECT_EQ(Utf8FromWide(L""), "");
    EXPECT_EQ(WideFromUtf8(""), L"");
}

TEST(Text, WritesAnUnpairedSurrogateAsTheReplacementCharacter) {
    EXPECT_EQ(Utf8FromWide(std::wstring(1, static_cast<WCHAR>(0xD800)) + L"x"), "\xEF\xBF\xBDx");
}

TEST(Text, DescribesSystemAndDirectShowResultsOnOneLine) {
    for (const HRESULT hr : {HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), HRESULT_FROM_WIN32(ERROR_DISK_FULL),
                             static_cast<HRESULT>(VFW_E_TYPE_NOT_ACCEPTED), static_cast<HRESULT>(0xA7654321)}) {
        const std::string text = DescribeResult(hr);
        EXPECT_EQ(text.find_first_of("\r\n"), std::string::npos) << text;
        EXPECT_NE(text.find("0x"), std::string::npos) << text;
        EXPECT_NE(text.back(), '.') << text;
    }
    EXPECT_EQ(DescribeResult(static_cast<HRESULT>(0xA7654321)), "error 0xA7654321");
    EXPECT_THAT(DescribeResult(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)), testing::EndsWith(" (0x80070002)"));
    // In words, of which the system itself has none for it.
    EXPECT_THAT(DescribeResult(VFW_E_TYPE_NOT_ACCEPTED), testing::EndsWith(" (0x8004022A)"));
}

} // namespace
} // namespace mkvmux

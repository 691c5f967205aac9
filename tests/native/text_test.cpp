// Conversions between UTF-16 and code pages answer as documented. Built for both lanes.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "win/wide_string.h"

namespace {

constexpr UINT kWindows1252 = 1252;

std::string ToBytes(UINT codePage, WideStringView text, DWORD flags = 0, const char* defaultCharacter = nullptr,
                    BOOL* usedDefault = nullptr) {
    char buffer[64];
    const int size = WideCharToMultiByte(codePage, flags, text.data(), static_cast<int>(text.size()), buffer,
                                         sizeof(buffer), defaultCharacter, usedDefault);
    return std::string(buffer, static_cast<size_t>(size));
}

WideString ToWide(UINT codePage, std::string_view text) {
    WCHAR buffer[64];
    const int size = MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), buffer, 64);
    return WideString(buffer, static_cast<size_t>(size));
}

TEST(Ansi, CharactersOfTheCodePageKeepTheirByte) {
    const WCHAR text[] = {'a', 0xe9, 0x20ac, 0x2122, 0x178, 0xff}; // é € ™ Ÿ ÿ
    EXPECT_EQ(ToBytes(kWindows1252, WideStringView(text, 6)), "a\xe9\x80\x99\x9f\xff");
}

TEST(Ansi, EveryByteComesBackFromItsCharacter) {
    for (int byte = 1; byte <= 0xff; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        EXPECT_EQ(ToBytes(kWindows1252, ToWide(kWindows1252, text)), text) << byte;
    }
}

TEST(Ansi, TheSystemsAndTheThreadsCodePageIs1252) {
    const WCHAR euro[] = {0x20ac};
    EXPECT_EQ(ToBytes(CP_ACP, WideStringView(euro, 1)), "\x80");
    EXPECT_EQ(ToBytes(CP_THREAD_ACP, WideStringView(euro, 1)), "\x80");
    EXPECT_EQ(GetACP(), kWindows1252);
}

TEST(Ansi, MissingCharactersBecomeTheDefault) {
    const WCHAR text[] = {'a', 0x4e2d, 'b'};
    BOOL used = FALSE;
    EXPECT_EQ(ToBytes(kWindows1252, WideStringView(text, 3), 0, nullptr, &used), "a?b");
    EXPECT_TRUE(used);
    EXPECT_EQ(ToBytes(kWindows1252, WideStringView(text, 3), 0, "_", &used), "a_b");
    EXPECT_EQ(ToBytes(kWindows1252, WideStringView(text, 1), 0, nullptr, &used), "a");
    EXPECT_FALSE(used);
}

TEST(Utf8, EveryLengthOfSequenceGoesBothWays) {
    const std::string bytes = "A\xc3\xa9\xe4\xb8\xad\xf0\x9f\x8e\xac"; // A é 中 🎬
    const WCHAR text[] = {'A', 0xe9, 0x4e2d, 0xd83c, 0xdfac};
    EXPECT_EQ(ToWide(CP_UTF8, bytes), WideString(text, 5));
    EXPECT_EQ(ToBytes(CP_UTF8, WideStringView(text, 5)), bytes);
}

TEST(Utf8, LoneSurrogatesBecomeTheReplacementCharacter) {
    const WCHAR text[] = {0xd83c, 'a', 0xdfac};
    EXPECT_EQ(ToBytes(CP_UTF8, WideStringView(text, 3)), "\xef\xbf\xbd"
                                                         "a\xef\xbf\xbd");
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(ToBytes(CP_UTF8, WideStringView(text, 3), WC_ERR_INVALID_CHARS), "");
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
}

TEST(Utf8, BytesThatAreNoUtf8BecomeReplacementCharacters) {
    const WideString text = ToWide(CP_UTF8, "a\xff\xc3z");
    const WCHAR expected[] = {'a', 0xfffd, 0xfffd, 'z'};
    EXPECT_EQ(text, WideString(expected, 4));
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, "\xff", 1, nullptr, 0), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
}

TEST(Conversion, SizeIsToldFirstAndIncludesTheTerminator) {
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, OLESTR("abc"), -1, nullptr, 0, nullptr, nullptr), 4);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, OLESTR("abc"), 3, nullptr, 0, nullptr, nullptr), 3);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, nullptr, 0), 4);
}

TEST(Conversion, SmallBufferIsAnError) {
    char bytes[3];
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, OLESTR("abc"), -1, bytes, 3, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, OLESTR("abc"), 3, bytes, 3, nullptr, nullptr), 3);
}

TEST(Conversion, BadArgumentsAreRefused) {
    char bytes[8];
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, OLESTR("a"), 0, bytes, 8, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, nullptr, 1, bytes, 8, nullptr, nullptr), 0);
}

#ifdef QRX_NATIVE // Wine lets it pass; Windows does not
TEST(Conversion, Utf8TakesNoDefaultCharacter) {
    char bytes[8];
    BOOL used = FALSE;
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, OLESTR("a"), 1, bytes, 8, nullptr, &used), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}
#endif

} // namespace

#include "mkvmux/mime_types.h"

#include <gtest/gtest.h>

namespace mkvmux {
namespace {

TEST(MimeTypes, FontsHaveTheNamesThatPlayersLookFor) {
    EXPECT_EQ(MimeTypeOf(L"a.ttf"), "application/x-truetype-font");
    EXPECT_EQ(MimeTypeOf(L"a.ttc"), "application/x-truetype-font");
    EXPECT_EQ(MimeTypeOf(L"a.otf"), "application/vnd.ms-opentype");
}

TEST(MimeTypes, TheExtensionCountsInAnyCaseAndInAnyDirectory) {
    EXPECT_EQ(MimeTypeOf(L"Z:\\some.dir\\Cover.JPG"), "image/jpeg");
    EXPECT_EQ(MimeTypeOf(L"/tmp/x.y/cover.small.png"), "image/png");
    EXPECT_EQ(MimeTypeOf(L"notes.txt"), "text/plain");
}

TEST(MimeTypes, AnUnknownExtensionOrNoneIsPlainBytes) {
    for (const wchar_t* path : {L"a.unknown", L"a", L"", L"dir.txt/a", L".ttf", L"a."}) {
        EXPECT_EQ(MimeTypeOf(path), "application/octet-stream");
    }
}

} // namespace
} // namespace mkvmux

#include "sources/base/printable.h"

#include <gtest/gtest.h>

namespace source {
namespace {

TEST(Printable, TextsOfAllLanguagesStayAsTheyAre) {
    for (const char* const text :
         {"", "font.ttf", "Gr\xc3\xbc\xc3\x9f", "\xe6\xbc\xa2\xe5\xad\x97", "\xf0\x9f\x98\x80"}) {
        EXPECT_EQ(Printable(text), text);
    }
}

TEST(Printable, LinesCannotBeForgedAndTerminalsNotBeCommanded) {
    EXPECT_EQ(Printable("a\r\nmkvmux: error: b"), "a??mkvmux: error: b");
    EXPECT_EQ(Printable("\x1b[2J\t\x07\x7f"), "?[2J???");
    EXPECT_EQ(Printable("\xc2\x9b"
                        "31m\xc2\x85"),
              "?31m?")
        << "controls of eight bits";
    EXPECT_EQ(Printable(std::string_view("a\0b", 3)), "a?b");
    EXPECT_EQ(Printable("\xe2\x80\xaetxt.exe\xe2\x81\xa6\xe2\x80\xa8"), "?txt.exe??") << "turned, isolated, broken";
}

TEST(Printable, WhatIsNoUtf8IsNotPassedOn) {
    EXPECT_EQ(Printable("a\xff"), "a?");
    EXPECT_EQ(Printable("\xc0\xaf"), "??") << "longer than needed";
    EXPECT_EQ(Printable("\xed\xa0\x80"), "?") << "a surrogate";
    EXPECT_EQ(Printable("\xf4\x90\x80\x80"), "????") << "behind the last character";
    EXPECT_EQ(Printable("\xe2\x82"), "??") << "cut off";
}

TEST(Printable, LongTextsEndInDots) {
    EXPECT_EQ(Printable(std::string(200, 'a')), std::string(200, 'a'));
    EXPECT_EQ(Printable(std::string(201, 'a')), std::string(200, 'a') + "...");
    EXPECT_EQ(Printable("\xc3\xbc\xc3\xbc\xc3\xbc", 2), "\xc3\xbc\xc3\xbc...");
}

} // namespace
} // namespace source

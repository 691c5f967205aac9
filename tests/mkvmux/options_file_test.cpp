#include "mkvmux/options_file.h"

#include <gmock/gmock.h>

#include "mkvmux/failure.h"
#include "mkvmux/text.h"
#include "tests/mkvmux/temporary_file.h"

namespace mkvmux {
namespace {

using test_mkvmux::TemporaryFile;
using testing::ElementsAre;
using testing::HasSubstr;

std::string At(const TemporaryFile& file) {
    return "@" + Utf8FromWide(file.Path());
}

TEST(OptionsFile, ItsStringsStandWhereItsNameStood) {
    const TemporaryFile file(L".json");
    file.SetContent(R"(["-o", "a b.mkv", "", "\u20ac\ud83c\udfac"])");
    EXPECT_THAT(ExpandOptionsFiles({"-y", At(file), "in.avi"}),
                ElementsAre("-y", "-o", "a b.mkv", "", "\xE2\x82\xAC\xF0\x9F\x8E\xAC", "in.avi"));
}

TEST(OptionsFile, AByteOrderMarkIsSkipped) {
    const TemporaryFile file(L".json");
    file.SetContent("\xEF\xBB\xBF[\"-y\"]");
    EXPECT_THAT(ExpandOptionsFiles({At(file)}), ElementsAre("-y"));
}

TEST(OptionsFile, AnAtSignInsideIsPlainText) {
    const TemporaryFile file(L".json");
    file.SetContent(R"(["@odd name.avi"])");
    EXPECT_THAT(ExpandOptionsFiles({At(file)}), ElementsAre("@odd name.avi"));
}

TEST(OptionsFile, WhatCannotBeTakenIsNamed) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"", "is not valid JSON"},
        {"[\"-y\"", "is not valid JSON"},
        {"-y -o a.mkv", "is not valid JSON"},
        {"{\"a\": 1}", "is not a JSON array of strings"},
        {"\"-y\"", "is not a JSON array of strings"},
        {"[\"-y\", 1]", "element 1 is not a string"},
        {"[[\"-y\"]]", "element 0 is not a string"},
        {"[\"\xFF\"]", "is not valid JSON"},
        {"[\"-y\", \"a\\u0000b\"]", "element 1 holds a zero character"},
    };
    const TemporaryFile file(L".json");
    for (const auto& [content, reason] : cases) {
        file.SetContent(content);
        try {
            (void)ExpandOptionsFiles({At(file)});
            ADD_FAILURE() << content << " was taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.what(), Utf8FromWide(file.Path()) + ": " + reason) << content;
        }
    }
}

TEST(OptionsFile, AMissingFileIsNamed) {
    try {
        (void)ExpandOptionsFiles({"@no_such_file.json"});
        FAIL() << "a file that is not there was read";
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("no_such_file.json: cannot be opened"));
    }
}

} // namespace
} // namespace mkvmux

// One code for each standard, of every language in the table.
#include "records/language_codes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

#include "records/language_lookup.h"
#include "records/language_table.h"

namespace {

using records::LanguageCodesOf;

bool IsCode(std::string_view code, size_t length) {
    return code.size() == length &&
           std::all_of(code.begin(), code.end(), [](char letter) { return letter >= 'a' && letter <= 'z'; });
}

void ExpectCodes(const WCHAR* name, const char* bibliographic, const char* tag) {
    const auto codes = LanguageCodesOf(name);
    EXPECT_EQ(codes.bibliographic, bibliographic);
    EXPECT_EQ(codes.tag, tag);
}

TEST(LanguageCodes, OfALanguageWithTwoCodesTheBibliographicOne) {
    ExpectCodes(OLESTR("Chinese"), "chi", "zh");
    ExpectCodes(OLESTR("French"), "fre", "fr");
    ExpectCodes(OLESTR("German"), "ger", "de");
    ExpectCodes(OLESTR("Flemish"), "dut", "nl");
}

TEST(LanguageCodes, WithoutACodeOfTwoLettersTheOneOfThreeIsTheTag) {
    ExpectCodes(OLESTR("Zuni"), "zun", "zun");
    ExpectCodes(OLESTR("Multiple languages"), "mul", "mul");
    ExpectCodes(OLESTR("Undetermined"), "und", "und");
}

TEST(LanguageCodes, OfTheRangeForLocalUseTheFirst) {
    ExpectCodes(OLESTR("Reserved for local use"), "qaa", "qaa");
}

TEST(LanguageCodes, NoLanguageAndAnUnknownOneAreUndetermined) {
    const WCHAR kanji[] = {0x65e5, 0x672c, 0x8a9e, 0};
    for (const WCHAR* name :
         {static_cast<const WCHAR*>(nullptr), OLESTR(""), OLESTR("english"), OLESTR("eng"), kanji}) {
        ExpectCodes(name, "und", "und");
    }
}

TEST(LanguageCodes, EachRowHasOneOfThreeLettersAndATag) {
    for (UINT32 index = 0; index < languageCount(); ++index) {
        const auto& row = records::LanguageRows()[index];
        const auto codes = LanguageCodesOf(records::ShownLanguageName(index).c_str());
        EXPECT_TRUE(IsCode(codes.bibliographic, 3)) << row.name << ' ' << codes.bibliographic;
        EXPECT_TRUE(IsCode(codes.tag, 2) || codes.tag == codes.bibliographic) << row.name << ' ' << codes.tag;
        EXPECT_EQ(IsCode(codes.tag, 2), *row.twoLetterCode != 0) << row.name;
        // No row would need a second code of three letters for its tag.
        EXPECT_TRUE(std::string_view(row.code).find('/') == std::string_view::npos || *row.twoLetterCode != 0)
            << row.name;
    }
}

} // namespace

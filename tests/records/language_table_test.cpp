// The language table through the lookups of the writer and of the settings page.
#include "records/language_table.h"

#include <gtest/gtest.h>

#include <string_view>

namespace {

using records::kNoLanguageIndex;
using records::LanguageRow;
using records::LanguageRows;

// Edge cases.

TEST(LanguageTable, EnglishYieldsEngAndLowerCaseEnglishYieldsNothing) {
    EXPECT_STREQ(languageCodeByName("English"), "eng");
    EXPECT_STREQ(languageCodeByName("english"), "");
}

TEST(LanguageTable, FlemishYieldsThePairOfDutchAndCastilianTheCodeOfSpanish) {
    EXPECT_STREQ(languageCodeByName("Flemish"), "dut/nld");
    EXPECT_STREQ(languageCodeByName("Castilian"), "spa");
}

TEST(LanguageTable, IndexOfFrenchIsTheFirstOfItsTwoRows) {
    const UINT32 index = languageIndexByName("French");
    ASSERT_LT(index + 1, languageCount());
    EXPECT_STREQ(LanguageRows()[index].code, "fre");
    EXPECT_STREQ(languageNameByIndex(index + 1), "French");
    EXPECT_STREQ(LanguageRows()[index + 1].code, "fra");
    ASSERT_GT(index, 0u);
    EXPECT_STRNE(languageNameByIndex(index - 1), "French");
}

TEST(LanguageTable, Index566YieldsNoNameAndIndex565YieldsZuni) {
    EXPECT_EQ(languageNameByIndex(566), nullptr);
    EXPECT_STREQ(languageNameByIndex(565), "Zuni");
}

TEST(LanguageTable, AbsentNameIsNotFound) {
    EXPECT_STREQ(languageCodeByName(nullptr), "");
    EXPECT_EQ(languageIndexByName(nullptr), 0xFFFFFFFFu);
}

// Lookups.

TEST(LanguageTable, UnknownNameHasTheIndexThatMeansNone) {
    EXPECT_EQ(languageIndexByName("english"), 0xFFFFFFFFu);
    EXPECT_EQ(languageIndexByName(""), 0xFFFFFFFFu);
    EXPECT_EQ(kNoLanguageIndex, 0xFFFFFFFFu);
    EXPECT_STREQ(languageCodeByName(""), "");
}

TEST(LanguageTable, NamesAreNeitherTrimmedNorCompletedNorSplit) {
    for (const char* name : {" English", "English ", "Englis", "English, Ol", "eng", "en", "Spanish; Castilian"}) {
        EXPECT_STREQ(languageCodeByName(name), "") << name;
        EXPECT_EQ(languageIndexByName(name), kNoLanguageIndex) << name;
    }
}

TEST(LanguageTable, AccentsCount) {
    EXPECT_STREQ(languageCodeByName("Volap\374k"), "vol");
    EXPECT_STREQ(languageCodeByName("Volapuk"), "");
    EXPECT_STREQ(languageCodeByName("Volap\303\274k"), "") << "UTF-8 is not the code page of the table";
    EXPECT_STREQ(languageCodeByName("Bokm\345l, Norwegian"), "nob");
    EXPECT_STREQ(languageCodeByName("Norwegian Bokm\345l"), "nob");
    EXPECT_STREQ(languageCodeByName("Proven\347al, Old (to 1500)"), "pro");
}

TEST(LanguageTable, PairIsReturnedAsItStands) {
    EXPECT_STREQ(languageCodeByName("Chinese"), "chi/zho");
    EXPECT_STREQ(languageCodeByName("Greek, Modern (1453-)"), "gre/ell");
}

TEST(LanguageTable, FrenchAndGermanYieldTheirBibliographicCodes) {
    EXPECT_STREQ(languageCodeByName("French"), "fre");
    EXPECT_STREQ(languageCodeByName("German"), "ger");
}

TEST(LanguageTable, EveryNameIsFoundAtItsFirstRow) {
    for (UINT32 index = 0; index < languageCount(); ++index) {
        const LanguageRow& row = LanguageRows()[index];
        const bool second = index > 0 && std::string_view(row.name) == LanguageRows()[index - 1].name;
        const UINT32 expected = second ? index - 1 : index;
        EXPECT_STREQ(languageNameByIndex(index), row.name);
        EXPECT_EQ(languageIndexByName(row.name), expected) << row.name;
        EXPECT_STREQ(languageCodeByName(row.name), LanguageRows()[expected].code) << row.name;
    }
}

TEST(LanguageTable, IndexFarPastTheEndYieldsNoName) {
    EXPECT_EQ(languageNameByIndex(0x7FFFFFFF), nullptr);
    EXPECT_EQ(languageNameByIndex(kNoLanguageIndex), nullptr);
}

} // namespace

// The language table as a whole: its counts, its order and the form of every row.
#include "records/language_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace {

using records::kNoLanguageIndex;
using records::LanguageRow;
using records::LanguageRows;

constexpr UINT32 kRowCount = 566;

bool IsLower(char letter) {
    return letter >= 'a' && letter <= 'z';
}

bool IsCode(std::string_view code, size_t length) {
    return code.size() == length && std::all_of(code.begin(), code.end(), IsLower);
}

bool IsPair(std::string_view code) {
    return code.size() == 7 && code[3] == '/' && IsCode(code.substr(0, 3), 3) && IsCode(code.substr(4), 3);
}

std::string WithoutCase(std::string text) {
    for (char& letter : text) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return text;
}

// The entries between separators "; ".
std::vector<std::string> Split(std::string_view joined) {
    std::vector<std::string> parts;
    for (size_t end; (end = joined.find("; ")) != std::string_view::npos; joined.remove_prefix(end + 2)) {
        parts.emplace_back(joined.substr(0, end));
    }
    parts.emplace_back(joined);
    return parts;
}

std::vector<LanguageRow> RowsNamed(std::string_view name) {
    std::vector<LanguageRow> found;
    std::ranges::copy_if(LanguageRows(), std::back_inserter(found),
                         [&](const LanguageRow& row) { return row.name == name; });
    return found;
}

// The one row of a name; none of its columns compares equal to anything when there is not exactly one.
LanguageRow RowOf(std::string_view name) {
    const std::vector<LanguageRow> rows = RowsNamed(name);
    EXPECT_EQ(rows.size(), 1u) << name;
    return rows.size() == 1 ? rows.front() : LanguageRow{"", "", "", "", ""};
}

std::vector<std::string> NamesWithCode(std::string_view code) {
    std::vector<std::string> names;
    for (const LanguageRow& row : LanguageRows()) {
        if (row.code == code) {
            names.emplace_back(row.name);
        }
    }
    return names;
}

using Names = std::vector<std::string>;

// Counts.

TEST(LanguageRows, Has566Rows) {
    EXPECT_EQ(languageCount(), kRowCount);
    EXPECT_EQ(LanguageRows().size(), kRowCount);
}

TEST(LanguageRows, Has487DistinctCodes) {
    std::set<std::string> codes;
    for (const LanguageRow& row : LanguageRows()) {
        codes.insert(row.code);
    }
    EXPECT_EQ(codes.size(), 487u);
}

TEST(LanguageRows, Has221RowsWithATwoLetterCode) {
    const auto rows = LanguageRows();
    EXPECT_EQ(std::ranges::count_if(rows, [](const LanguageRow& row) { return row.twoLetterCode[0] != '\0'; }), 221);
}

TEST(LanguageRows, Has21PairRowsIn18Pairs) {
    std::multiset<std::string> pairs;
    for (const LanguageRow& row : LanguageRows()) {
        if (std::string_view(row.code).find('/') != std::string_view::npos) {
            pairs.insert(row.code);
        }
    }
    EXPECT_EQ(pairs.size(), 21u);
    EXPECT_EQ(std::set<std::string>(pairs.begin(), pairs.end()),
              (std::set<std::string>{"alb/sqi", "arm/hye", "baq/eus", "bur/mya", "chi/zho", "cze/ces", "dut/nld",
                                     "geo/kat", "gre/ell", "ice/isl", "mac/mkd", "mao/mri", "may/msa", "per/fas",
                                     "rum/ron", "slo/slk", "tib/bod", "wel/cym"}));
}

// Order.

TEST(LanguageRows, RowsAreInAlphabeticalOrderWithoutRegardToCase) {
    const auto rows = LanguageRows();
    for (size_t index = 1; index < rows.size(); ++index) {
        EXPECT_LE(WithoutCase(rows[index - 1].name), WithoutCase(rows[index].name));
    }
}

TEST(LanguageRows, TlhInganHolStandsAmongTheNamesWithT) {
    const UINT32 index = languageIndexByName("tlhIngan-Hol");
    EXPECT_EQ(index, languageIndexByName("Tiv") + 1);
    EXPECT_EQ(index, languageIndexByName("Tlingit") - 1);
}

TEST(LanguageRows, FirstRowIsAbkhazianAndLastIsZuni) {
    const LanguageRow& first = LanguageRows().front();
    EXPECT_STREQ(first.name, "Abkhazian");
    EXPECT_STREQ(first.code, "abk");
    EXPECT_STREQ(first.twoLetterCode, "ab");
    const LanguageRow& last = LanguageRows().back();
    EXPECT_STREQ(last.name, "Zuni");
    EXPECT_STREQ(last.code, "zun");
    EXPECT_STREQ(last.twoLetterCode, "");
}

TEST(LanguageRows, PunctuationSortsBeforeLetters) {
    EXPECT_LT(languageIndexByName("Mi'kmaq"), languageIndexByName("Micmac"));
    EXPECT_LT(languageIndexByName("Mon-Khmer languages"), languageIndexByName("Mong"));
    EXPECT_LT(languageIndexByName("German, Low"), languageIndexByName("Germanic languages"));
}

// Names that share a code.

TEST(LanguageRows, EachNameOfALanguageHasARowWithTheSameColumns) {
    const LanguageRow adygei = RowOf("Adygei");
    EXPECT_STREQ(adygei.englishNames, "Adyghe; Adygei");
    EXPECT_STREQ(adygei.code, "ady");
    const LanguageRow adyghe = RowOf("Adyghe");
    EXPECT_STREQ(adyghe.englishNames, adygei.englishNames);
    EXPECT_STREQ(adyghe.frenchNames, adygei.frenchNames);
    EXPECT_STREQ(adyghe.code, adygei.code);
    EXPECT_EQ(NamesWithCode("spa"), (Names{"Castilian", "Spanish"}));
    EXPECT_EQ(NamesWithCode("dut/nld"), (Names{"Dutch", "Flemish"}));
    EXPECT_EQ(NamesWithCode("rum/ron"), (Names{"Moldavian", "Moldovan", "Romanian"}));
    EXPECT_EQ(NamesWithCode("zxx"), (Names{"No linguistic content", "Not applicable"}));
}

TEST(LanguageRows, ChineseHasTheFiveColumnsOfItsLanguage) {
    const LanguageRow row = RowOf("Chinese");
    EXPECT_STREQ(row.englishNames, "Chinese");
    EXPECT_STREQ(row.frenchNames, "chinois");
    EXPECT_STREQ(row.code, "chi/zho");
    EXPECT_STREQ(row.twoLetterCode, "zh");
}

TEST(LanguageRows, FrenchAndGermanHaveARowForEachOfTheirTwoCodes) {
    const std::vector<LanguageRow> french = RowsNamed("French");
    ASSERT_EQ(french.size(), 2u);
    EXPECT_STREQ(french[0].code, "fre");
    EXPECT_STREQ(french[1].code, "fra");
    const std::vector<LanguageRow> german = RowsNamed("German");
    ASSERT_EQ(german.size(), 2u);
    EXPECT_STREQ(german[0].code, "ger");
    EXPECT_STREQ(german[1].code, "deu");
    for (const auto& rows : {french, german}) {
        EXPECT_STREQ(rows[0].englishNames, rows[1].englishNames);
        EXPECT_STREQ(rows[0].frenchNames, rows[1].frenchNames);
        EXPECT_STREQ(rows[0].twoLetterCode, rows[1].twoLetterCode);
    }
}

TEST(LanguageRows, OnlyFrenchAndGermanHaveTwoRowsOfOneName) {
    std::multiset<std::string> names;
    for (const LanguageRow& row : LanguageRows()) {
        names.insert(row.name);
    }
    std::set<std::string> doubled;
    std::ranges::copy_if(names, std::inserter(doubled, doubled.end()),
                         [&](const std::string& name) { return names.count(name) > 1; });
    EXPECT_EQ(doubled, (std::set<std::string>{"French", "German"}));
}

TEST(LanguageRows, HasTheSpecialCodes) {
    EXPECT_EQ(NamesWithCode("mul"), (Names{"Multiple languages"}));
    EXPECT_EQ(NamesWithCode("und"), (Names{"Undetermined"}));
    EXPECT_EQ(NamesWithCode("mis"), (Names{"Uncoded languages"}));
    EXPECT_EQ(NamesWithCode("zxx").size(), 2u);
}

// The make-up of every row.

TEST(LanguageRows, EveryRowIsNamedAsOneOfItsEnglishNames) {
    for (const LanguageRow& row : LanguageRows()) {
        const Names names = Split(row.englishNames);
        const bool listed = std::ranges::find(names, row.name) != names.end();
        // The registration authority sorts this one in under a turned name as well.
        EXPECT_EQ(listed, std::string_view(row.name) != "Sotho, Northern") << row.name;
    }
}

TEST(LanguageRows, EveryEnglishNameHasARowOfItsOwn) {
    for (const LanguageRow& row : LanguageRows()) {
        for (const std::string& name : Split(row.englishNames)) {
            const UINT32 index = languageIndexByName(name.c_str());
            ASSERT_NE(index, kNoLanguageIndex) << name;
            EXPECT_STREQ(LanguageRows()[index].englishNames, row.englishNames);
            EXPECT_STREQ(LanguageRows()[index].frenchNames, row.frenchNames);
            EXPECT_STREQ(LanguageRows()[index].twoLetterCode, row.twoLetterCode);
        }
    }
}

TEST(LanguageRows, EveryCodeHasTheFormOfItsColumn) {
    for (const LanguageRow& row : LanguageRows()) {
        const std::string_view code = row.code;
        // The one range, which a user's own languages take their codes from.
        EXPECT_TRUE(IsCode(code, 3) || IsPair(code) || code == "qaa-qtz") << row.name;
        EXPECT_TRUE(row.twoLetterCode[0] == '\0' || IsCode(row.twoLetterCode, 2)) << row.name;
        EXPECT_STRNE(row.frenchNames, "") << row.name;
    }
}

} // namespace

#include "mkvmux/language_choice.h"

#include <gmock/gmock.h>

namespace mkvmux {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(LanguageChoice, TakesTheNameInAnyCase) {
    EXPECT_EQ(FindLanguage(L"German"), L"German");
    EXPECT_EQ(FindLanguage(L"gErMaN"), L"German");
    EXPECT_EQ(FindLanguage(L"norwegian bokm\u00e5l").has_value(), FindLanguage(L"NORWEGIAN BOKM\u00c5L").has_value());
}

TEST(LanguageChoice, TakesTheCodesOfTwoAndThreeLetters) {
    EXPECT_EQ(FindLanguage(L"de"), L"German");
    EXPECT_EQ(FindLanguage(L"ger"), L"German");
    EXPECT_EQ(FindLanguage(L"DEU"), L"German");
    EXPECT_EQ(FindLanguage(L"zho"), L"Chinese");
}

TEST(LanguageChoice, ANameAsItStandsComesBeforeACode) {
    EXPECT_EQ(FindLanguage(L"Ga"), L"Ga");
    EXPECT_EQ(FindLanguage(L"ga"), L"Irish");
}

TEST(LanguageChoice, DoesNotTakePartsOfNamesOrCodes) {
    for (const wchar_t* text : {L"", L"Germ", L"g", L"er/", L"ger/deu", L"/", L"German "}) {
        EXPECT_FALSE(FindLanguage(text)) << testing::PrintToString(std::wstring(text));
    }
}

TEST(LanguageChoice, SuggestsWhatIsSpeltAlike) {
    EXPECT_THAT(NearestLanguages(L"Germn"), ElementsAre(L"German"));
    EXPECT_THAT(NearestLanguages(L"englsh"), Contains(L"English"));
}

TEST(LanguageChoice, SuggestsTheNamesThatHaveTheWord) {
    EXPECT_THAT(NearestLanguages(L"greek"),
                testing::IsSupersetOf({L"Greek, Ancient (to 1453)", L"Greek, Modern (1453-)"}));
}

TEST(LanguageChoice, SuggestsAtMostThree) {
    EXPECT_EQ(NearestLanguages(L"a").size(), 3u);
    EXPECT_THAT(NearestLanguages(std::wstring(1000, L'x')), IsEmpty());
}

TEST(LanguageChoice, ListsCodesAndNames) {
    const std::string list = ListLanguages();
    EXPECT_TRUE(list.starts_with("abk      Abkhazian\n"));
    for (const char* line : {"ger      German\n", "chi/zho  Chinese\n", "vol      Volap\xC3\xBCk\n"}) {
        EXPECT_NE(list.find(line), std::string::npos) << line;
    }
}

} // namespace
} // namespace mkvmux

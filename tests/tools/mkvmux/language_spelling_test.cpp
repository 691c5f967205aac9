#include "tools/mkvmux/language_spelling.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mkv/language_table.h"
#include "tools/mkvmux/language_choice.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {
namespace {

constexpr LCID kEnglish = 0x409;
constexpr LCID kRussian = 0x419;  // code page 1251
constexpr LCID kJapanese = 0x411; // code page 932

// A thread of another locale has another code page; the test's own gets its locale back.
class LanguageSpellingTest : public testing::Test {
  protected:
    ~LanguageSpellingTest() override { SetThreadLocale(m_before); }

    static void UseLocale(LCID locale, UINT codePage) {
        ASSERT_TRUE(SetThreadLocale(locale));
        CPINFOEXW info{};
        ASSERT_TRUE(GetCPInfoExW(CP_THREAD_ACP, 0, &info));
        ASSERT_EQ(info.CodePage, codePage);
    }

    // The names whose language would not be written as the list has it.
    static std::vector<std::string> Lost() {
        std::vector<std::string> lost;
        for (const LanguageRow& row : languageRows()) {
            const auto spelling = SpellingForMuxer(WideFromCodePage(kListCodePage, row.name));
            if (!spelling || CodeWrittenFor(*spelling) != languageCodeByName(row.name)) {
                lost.emplace_back(Utf8FromWide(WideFromCodePage(kListCodePage, row.name)));
            }
        }
        return lost;
    }

  private:
    LCID m_before = GetThreadLocale();
};

TEST_F(LanguageSpellingTest, EveryNameKeepsItsCodeUnder1252And1251) {
    UseLocale(kEnglish, 1252);
    EXPECT_EQ(Lost(), std::vector<std::string>());
    UseLocale(kRussian, 1251);
    EXPECT_EQ(Lost(), std::vector<std::string>());
}

TEST_F(LanguageSpellingTest, UnderACodePageOfTwoBytesOnlyANameThatNoTextGivesIsMissing) {
    UseLocale(kJapanese, 932);
    EXPECT_EQ(Lost(), std::vector<std::string>{"Volap\xC3\xBCk"});
    UseCodePageOfTheList();
    EXPECT_EQ(Lost(), std::vector<std::string>());
}

TEST_F(LanguageSpellingTest, IsTheTextThatGivesTheBytesOfTheList) {
    UseLocale(kEnglish, 1252);
    EXPECT_EQ(SpellingForMuxer(L"Volap\u00fck"), L"Volap\u00fck");
    UseLocale(kRussian, 1251);
    EXPECT_EQ(SpellingForMuxer(L"Volap\u00fck"), L"Volap\u044ck");
    EXPECT_EQ(CodeWrittenFor(L"Volap\u00fck"), "");
    EXPECT_EQ(SpellingForMuxer(L"German"), L"German");
}

TEST_F(LanguageSpellingTest, ANameThatNoTextGivesIsReplacedByAnotherOneOfItsCode) {
    UseLocale(0x412, 949); // Korean
    EXPECT_EQ(SpellingForMuxer(L"Proven\u00e7al, Old (to 1500)"), L"Occitan, Old (to 1500)");
}

TEST_F(LanguageSpellingTest, IsNoneForWhatIsNotInTheList) {
    UseLocale(kEnglish, 1252);
    EXPECT_EQ(SpellingForMuxer(L"german"), std::nullopt);
    EXPECT_EQ(SpellingForMuxer(L""), std::nullopt);
    EXPECT_EQ(CodeWrittenFor(L"german"), "");
    EXPECT_EQ(CodeWrittenFor(L"Chinese"), "chi/zho");
}

} // namespace
} // namespace mkvmux

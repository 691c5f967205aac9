#include "mkvmux/language_spelling.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "mkvmux/language_choice.h"
#include "mkvmux/text.h"
#include "records/language_lookup.h"
#include "records/language_table.h"
#include "win/code_page_text.h"

namespace mkvmux {
namespace {

constexpr LCID kEnglish = 0x409;
constexpr LCID kRussian = 0x419;  // code page 1251
constexpr LCID kJapanese = 0x411; // code page 932
constexpr LCID kKorean = 0x412;   // code page 949

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
        for (const records::LanguageRow& row : records::LanguageRows()) {
            const auto spelling = SpellingForMuxer(win::WideFromNarrow(kListCodePage, row.name));
            if (!spelling || CodeWrittenFor(*spelling) != languageCodeByName(row.name)) {
                lost.emplace_back(Utf8FromWide(win::WideFromNarrow(kListCodePage, row.name)));
            }
        }
        return lost;
    }

  private:
    LCID m_before = GetThreadLocale();
};

TEST_F(LanguageSpellingTest, EveryNameKeepsItsCodeUnderEveryCodePage) {
    struct Locale {
        LCID id;
        UINT codePage;
    };
    for (const auto [id, codePage] :
         {Locale{kEnglish, 1252}, Locale{kRussian, 1251}, Locale{kJapanese, 932}, Locale{kKorean, 949},
          Locale{0x804, 936}, Locale{0x404, 950}, Locale{0x41E, 874}, Locale{0x405, 1250}, Locale{0x408, 1253},
          Locale{0x41F, 1254}, Locale{0x40D, 1255}, Locale{0x401, 1256}, Locale{0x427, 1257}, Locale{0x42A, 1258}}) {
        SCOPED_TRACE(codePage);
        UseLocale(id, codePage);
        EXPECT_EQ(Lost(), std::vector<std::string>());
    }
}

TEST_F(LanguageSpellingTest, IsTheTextThatGivesTheBytesOfTheList) {
    UseLocale(kEnglish, 1252);
    EXPECT_EQ(SpellingForMuxer(L"Volap\u00fck"), L"Volap\u00fck");
    UseLocale(kRussian, 1251);
    EXPECT_EQ(SpellingForMuxer(L"Volap\u00fck"), L"Volap\u044ck");
    EXPECT_EQ(CodeWrittenFor(L"Volap\u00fck"), "");
    EXPECT_EQ(SpellingForMuxer(L"German"), L"German");
}

TEST_F(LanguageSpellingTest, ANameThatNoTextGivesIsSpeltAsListsShowIt) {
    UseLocale(kKorean, 949);
    const auto spelling = SpellingForMuxer(L"Proven\u00e7al, Old (to 1500)");
    ASSERT_TRUE(spelling);
    EXPECT_EQ(*spelling, records::ShownLanguageName(languageIndexByName("Proven\xE7"
                                                                        "al, Old (to 1500)")));
    EXPECT_EQ(CodeWrittenFor(*spelling), "pro");
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

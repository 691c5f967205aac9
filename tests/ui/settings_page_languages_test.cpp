// Languages chosen on the settings page under the code pages of several countries, and what the filter writes for them.
#include <gtest/gtest.h>

#include <qrx_mkvmuxer.h>

#include "records/language_lookup.h"
#include "records/language_table.h"
#include "tests/support/matroska_layout.h"
#include "tests/ui/muxer_under_test.h"
#include "tests/ui/page_rig.h"
#include "ui/language_names.h"
#include "win/bstr.h"

using namespace test_support;
using namespace ui_test;

namespace {

struct Country {
    LCID locale;
    UINT codePage;
};

std::ostream& operator<<(std::ostream& out, const Country& country) {
    return out << "code page " << country.codePage;
}

// The code page of a thread follows its locale; the test's own gets its locale back.
class SettingsPageLanguagesTest : public testing::TestWithParam<Country> {
  protected:
    void SetUp() override {
        ASSERT_TRUE(SetThreadLocale(GetParam().locale));
        CPINFOEXW info{};
        ASSERT_TRUE(GetCPInfoExW(CP_THREAD_ACP, 0, &info));
        ASSERT_EQ(GetParam().codePage, info.CodePage);
    }
    void TearDown() override { SetThreadLocale(m_before); }

  private:
    LCID m_before = GetThreadLocale();
};

std::vector<UINT32> RowsWithAccents() {
    std::vector<UINT32> rows;
    for (UINT32 row = 0; row < languageCount(); ++row) {
        const std::string_view name = languageNameByIndex(row);
        if (std::any_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; })) {
            rows.push_back(row);
        }
    }
    return rows;
}

std::wstring LanguagePath(size_t input) {
    return L"Video/In " + std::to_wstring(input) + L"/Track Language";
}

// Chooses the row as a click in the open list does, without a click on each of hundreds.
void ChooseRow(const PageRig& rig, const std::wstring& path, UINT32 row) {
    const TreeDriver tree = rig.Tree();
    const auto select = [&tree](const std::wstring& which) {
        SendMessageW(tree.Tree(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(tree.Find(which)));
    };
    select(path);
    ASSERT_EQ(static_cast<LRESULT>(row), SendMessageW(tree.Editor(), CB_SETCURSEL, row, 0));
    select(L"Common");
}

TEST_P(SettingsPageLanguagesTest, EveryRowOfTheListLeadsTheFilterToItsCode) {
    const auto names = LanguageNames();
    for (UINT32 row = 0; row < languageCount(); ++row) {
        const win::Bstr language(names[row]);
        TrackSettings settings{};
        settings.language = language.Get();
        EXPECT_EQ(languageCodeByName(languageNameByIndex(row)), records::LanguageCodeOf(settings.language))
            << "row " << row;
        EXPECT_EQ(languageIndexByName(languageNameByIndex(row)), LanguagePosition(names[row])) << "row " << row;
    }
}

TEST_P(SettingsPageLanguagesTest, NamesWithAccentsChosenOnThePageReachTheFileAndAreShownAgain) {
    const auto rows = RowsWithAccents();
    ASSERT_GE(rows.size(), 4u);
    PageRig rig(CLSID_MKVMuxerPropertyPage);
    MuxerUnderTest muxer;
    for (size_t input = 0; input < rows.size(); ++input) {
        muxer.ConnectVideo();
    }
    rig.Show(muxer.Filter());
    for (size_t input = 0; input < rows.size(); ++input) {
        ChooseRow(rig, LanguagePath(input), rows[input]);
    }
    EXPECT_EQ(S_OK, rig.Page().Apply());
    EXPECT_EQ(S_OK, rig.Page().Deactivate());
    EXPECT_EQ(S_OK, rig.Activate());
    for (size_t input = 0; input < rows.size(); ++input) {
        const TreeDriver tree = rig.Tree();
        const HTREEITEM item = tree.Find(LanguagePath(input));
        SendMessageW(tree.Tree(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
        EXPECT_EQ(static_cast<LRESULT>(rows[input]), SendMessageW(tree.Editor(), CB_GETCURSEL, 0, 0));
    }
    rig.Page().Deactivate();
    rig.Page().SetObjects(0, nullptr);
    const auto layout = ReadLayout(muxer.WriteFile());
    ASSERT_EQ(rows.size(), layout.tracks.size());
    for (size_t input = 0; input < rows.size(); ++input) {
        EXPECT_EQ(languageCodeByName(languageNameByIndex(rows[input])), layout.tracks[input].language)
            << "row " << rows[input];
    }
}

INSTANTIATE_TEST_SUITE_P(Countries, SettingsPageLanguagesTest,
                         testing::Values(Country{0x0409, 1252}, Country{0x0419, 1251}, Country{0x0411, 932},
                                         Country{0x0412, 949}, Country{0x0804, 936}, Country{0x0404, 950},
                                         Country{0x0415, 1250}, Country{0x0408, 1253}, Country{0x041e, 874}),
                         [](const auto& country) { return "CodePage" + std::to_string(country.param.codePage); });

} // namespace

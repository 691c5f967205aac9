// Sections and keys that are no chains of element names: refused, and never part of a query.
#include <gtest/gtest.h>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"

namespace {

const std::wstring kBadNames[] = {
    L"a[",
    L"a[1]",
    L"*",
    L".",
    L"..",
    L"a/../b",
    L"a//b",
    L"//a",
    L"a/",
    L"@version",
    L"a|b",
    L"a or b",
    L"text()",
    L"a[@x='1']",
    L"'",
    L"\"",
    L"p:a",
    L"<a>",
    L"a&b",
    L"1a",
    L"-a",
    L"a\tb",
    L"a\nb",
    L"a$",
    L"a\u00d7",
    L"\U0001F600",
    std::wstring(L"a\0b", 3),
    std::wstring(256, L'n'),
};

class XmlBadName : public ComTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_save.open_file(L"a", File()));
        ASSERT_TRUE(m_save.save_int32(L"v", 1));
    }
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }

    ScratchFolder m_folder;
    xml_save_t m_save{kSettingsPathPrefix};
};

TEST_F(XmlBadName, KeysAreRefusedBySaversAndLoadersAndNothingIsHalfWritten) {
    m_save.close();
    const std::string before = FileText(File());
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(load.open_file(L"a", File()));
    for (const std::wstring& name : kBadNames) {
        if (name == L"a or b") {
            continue; // blanks become underscores: a name like any other
        }
        EXPECT_FALSE(m_save.save_int32(name, 2)) << name;
        EXPECT_FALSE(m_save.save_string(L"new/" + name, L"x")) << name;
        EXPECT_FALSE(m_save.save_binary(name, "x", 1)) << name;
        EXPECT_EQ(-77, load.load_int32(name, -77)) << name;
        EXPECT_EQ(kAbsentValue, load.value_size(name)) << name;
        EXPECT_EQ(L"default", load.load_string(name, L"default")) << name;
    }
    EXPECT_FALSE(m_save.save_int32(L"", 2));
    EXPECT_FALSE(m_save.save_int32(L"a\\b", 2));
    m_save.close();
    EXPECT_EQ(before, FileText(File()));
}

TEST_F(XmlBadName, SectionsAreRefusedAndTheOpenOneStays) {
    xml_load_t load(kSettingsPathPrefix);
    for (const std::wstring& name : kBadNames) {
        if (name == L"a or b" || name == L"a/") {
            continue; // blanks become underscores; one separator may end a section
        }
        EXPECT_FALSE(m_save.open_file(name, L"")) << name;
        EXPECT_FALSE(m_save.delete_section(name)) << name;
        EXPECT_FALSE(load.open_file(name, File())) << name;
    }
    EXPECT_TRUE(m_save.save_int32(L"w", 2));
    m_save.close();
    ASSERT_TRUE(load.open_file(L"a", File()));
    EXPECT_EQ(1, load.load_int32(L"v", 0));
    EXPECT_EQ(2, load.load_int32(L"w", 0));
}

TEST_F(XmlBadName, PathsDeeperThanAParserFollowsAreRefused) {
    std::wstring deep;
    for (int i = 0; i < 97; ++i) {
        deep += L"/d";
    }
    EXPECT_TRUE(m_save.save_int32(deep, 3)); // with prefix and section 100
    EXPECT_FALSE(m_save.save_int32(deep + L"/d", 3));
    m_save.close();
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    EXPECT_EQ(3, load.load_int32(deep, 0));
}

TEST_F(XmlBadName, NamesOfOtherScriptsAreNames) {
    for (const wchar_t* const name :
         {L"caf\u00e9", L"\u65e5\u672c", L"\u0416", L"_", L"a.b-c_1", L"xml", L"and", L"div"}) {
        ASSERT_TRUE(m_save.save_int32(name, 4)) << name;
    }
    m_save.close();
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    for (const wchar_t* const name :
         {L"caf\u00e9", L"\u65e5\u672c", L"\u0416", L"_", L"a.b-c_1", L"xml", L"and", L"div"}) {
        EXPECT_EQ(4, load.load_int32(name, 0)) << name;
    }
}

} // namespace

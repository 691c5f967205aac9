// What the XML saver does to documents: where elements go, what is replaced, deleted and refused.
#include <gtest/gtest.h>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"

namespace {

class XmlSave : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }
    xml_load_t& Loaded(const std::wstring& section) {
        m_save.close();
        m_load.close();
        EXPECT_TRUE(m_load.open_file(section, File()));
        return m_load;
    }

    ScratchFolder m_folder;
    xml_save_t m_save{kSettingsPathPrefix};
    xml_load_t m_load{kSettingsPathPrefix};
};

TEST_F(XmlSave, ASectionPathWithABlankBecomesElementsBelowTheRoot) {
    ASSERT_TRUE(m_save.open_file(L"a b\\c", File()));
    ASSERT_TRUE(m_save.save_int32(L"v", 5));
    m_save.close();
    EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<XMLSettings version=\"1.0\">\n<preferences>\n"
              "<RegistrySettings>\n<a_b>\n<c>\n"
              "<v xmlns:dt=\"urn:schemas-microsoft-com:datatypes\" dt:dt=\"i4\">5</v>\n"
              "</c>\n</a_b>\n</RegistrySettings>\n</preferences>\n</XMLSettings>\n",
              FileText(File()));
}

TEST_F(XmlSave, ReopeningOnASecondFileFailsWhileTheFirstIsOpen) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.open_file(L"b", m_folder.File(L"second.xml")));
    ASSERT_TRUE(m_save.save_int32(L"v", 1));
    EXPECT_TRUE(m_save.open_file(L"b", File()));
    EXPECT_TRUE(m_save.open_file(L"c", L""));
    EXPECT_EQ(1, Loaded(L"a").load_int32(L"v", 0));
    EXPECT_EQ(std::vector<std::wstring>{L"f.xml"}, m_folder.FileNames());
    EXPECT_TRUE(m_save.open_file(L"b", m_folder.File(L"second.xml")));
}

TEST_F(XmlSave, OpeningWithoutAFileIsRefused) {
    EXPECT_FALSE(m_save.open_file(L"a", L""));
    EXPECT_FALSE(m_load.open_file(L"a", L""));
    EXPECT_FALSE(m_save.save_int32(L"v", 1));
    EXPECT_FALSE(m_save.delete_section(L"a"));
}

TEST_F(XmlSave, KeepsWhatItDoesNotTouch) {
    WriteFileText(File(), "<Foreign><!-- kept --><preferences other=\"1\"><RegistrySettings><a>"
                          "<v unit=\"ms\">1</v><w><![CDATA[x><y]]></w></a></RegistrySettings></preferences></Foreign>");
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_int32(L"v", 2));
    EXPECT_EQ(2, Loaded(L"a").load_int32(L"v", 0));
    EXPECT_EQ(L"x><y", m_load.load_string(L"w", L""));
    const std::string text = FileText(File());
    for (const char* const kept : {"<Foreign>", "<!-- kept -->", "other=\"1\"", "unit=\"ms\"", "<![CDATA[x><y]]>"}) {
        EXPECT_NE(std::string::npos, text.find(kept)) << kept;
    }
}

TEST_F(XmlSave, DeletingASectionRemovesItsElementAndNothingElse) {
    ASSERT_TRUE(m_save.open_file(L"a/b", File()));
    ASSERT_TRUE(m_save.save_int32(L"c/v", 1));
    ASSERT_TRUE(m_save.open_file(L"a", L""));
    ASSERT_TRUE(m_save.save_int32(L"v", 2));
    EXPECT_TRUE(m_save.delete_section(L"a\\b"));
    EXPECT_FALSE(m_save.delete_section(L"a\\b"));
    EXPECT_EQ(2, Loaded(L"a").load_int32(L"v", 0));
    EXPECT_EQ(1U, m_load.child_count());
}

TEST_F(XmlSave, AllSectionsTogetherAreNeverDeleted) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_int32(L"v", 2));
    for (const wchar_t* const section : {L"", L"/", L"\\", L"//"}) {
        EXPECT_FALSE(m_save.delete_section(section));
    }
    EXPECT_EQ(2, Loaded(L"a").load_int32(L"v", 0));
}

TEST_F(XmlSave, SavingIntoADeletedSectionMakesItAgain) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_int32(L"v", 1));
    ASSERT_TRUE(m_save.delete_section(L"a"));
    ASSERT_TRUE(m_save.save_int32(L"w", 2));
    EXPECT_EQ(0, Loaded(L"a").load_int32(L"v", 0));
    EXPECT_EQ(2, m_load.load_int32(L"w", 0));
}

TEST_F(XmlSave, ANameIsEitherASectionOrAValue) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_int32(L"value", 1));
    ASSERT_TRUE(m_save.save_int32(L"section/v", 2));
    EXPECT_FALSE(m_save.save_int32(L"value/below", 3));
    EXPECT_FALSE(m_save.save_int32(L"section", 3));
    EXPECT_FALSE(m_save.open_file(L"a/value", L""));
    EXPECT_FALSE(m_save.open_file(L"a/value/below", L""));
    EXPECT_EQ(1, Loaded(L"a").load_int32(L"value", 0));
    EXPECT_EQ(2, m_load.load_int32(L"section/v", 0));
    EXPECT_EQ(2U, m_load.child_count());
}

TEST_F(XmlSave, TextsThatNoDocumentCanHoldAreRefusedAndTheOldValueStays) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_string(L"v", L"old"));
    const std::wstring texts[] = {std::wstring(1, L'\0'), L"a\x01",   L"\x1F",   L"\x0B",  L"\xD800",
                                  L"\xDC00\xD800",        L"x\xD83D", L"\xFFFE", L"\xFFFF"};
    for (const std::wstring& text : texts) {
        EXPECT_FALSE(m_save.save_string(L"v", text));
        EXPECT_FALSE(m_save.save_string(L"new", text));
    }
    EXPECT_EQ(L"old", Loaded(L"a").load_string(L"v", L""));
    EXPECT_EQ(1U, m_load.child_count());
}

TEST_F(XmlSave, ABlockWithoutDataIsRefusedUnlessItIsEmpty) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.save_binary(L"v", nullptr, 1));
    EXPECT_TRUE(m_save.save_binary(L"v", nullptr, 0));
    EXPECT_EQ(0U, Loaded(L"a").value_size(L"v"));
}

TEST_F(XmlSave, AFileNeverGrowsLongerThanALoaderTakes) {
    constexpr size_t kMaxFileBytes = 8 * 1024 * 1024;
    const std::wstring third(kMaxFileBytes / 3, L'x');
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.save_string(L"v", std::wstring(kMaxFileBytes + 1, L'x')));
    EXPECT_FALSE(m_save.save_string(L"v", std::wstring(kMaxFileBytes / 5 + 1, L'&')));
    EXPECT_FALSE(m_save.save_binary(L"v", third.data(), kMaxFileBytes));
    ASSERT_TRUE(m_save.save_string(L"v1", third));
    ASSERT_TRUE(m_save.save_string(L"v2", third));
    EXPECT_FALSE(m_save.save_string(L"v3", third));
    EXPECT_TRUE(m_save.save_string(L"v2", L"short")); // and its room is there again
    EXPECT_TRUE(m_save.save_string(L"v3", third));
    EXPECT_TRUE(m_save.save_string(L"v4", std::wstring(kMaxFileBytes / 3 - 4096, L'y')));
    EXPECT_TRUE(third == Loaded(L"a").load_string(L"v3", L""));
    EXPECT_EQ(L"short", m_load.load_string(L"v2", L""));
    const size_t bytes = FileText(File()).size();
    EXPECT_LT(bytes, kMaxFileBytes);
    EXPECT_GT(bytes, kMaxFileBytes - 8192);
}

TEST_F(XmlSave, AsManyValuesAsAreTakenAreWritten) {
    const std::wstring text(4000, L'x');
    // Each value brings many tags, and so many line breaks, with it.
    const auto key = [](int number) { return L"v" + std::to_wstring(number) + L"/b/c/d/e/f"; };
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    int count = 0;
    while (m_save.save_string(key(count), text)) {
        ++count;
    }
    ASSERT_GT(count, 1500);
    EXPECT_TRUE(text == Loaded(L"a").load_string(key(0), L""));
    EXPECT_TRUE(text == m_load.load_string(key(count - 1), L""));
}

TEST_F(XmlSave, NoSectionIsMadeThatTheFileHasNoRoomFor) {
    std::wstring deep;
    for (int i = 0; i < 90; ++i) {
        deep += L"/" + std::wstring(255, L'd');
    }
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_string(L"v", std::wstring(8 * 1024 * 1024 - 4096, L'x')));
    EXPECT_FALSE(m_save.open_file(deep, L""));
    EXPECT_TRUE(m_save.open_file(L"a", L"")); // it is there already
    EXPECT_TRUE(m_save.save_int32(L"w", 1));
    EXPECT_EQ(1, Loaded(L"a").load_int32(L"w", 0));
}

TEST_F(XmlSave, AFileWhoseLineBreaksWouldMakeItTooLongTakesNoMore) {
    constexpr size_t kMaxFileBytes = 8 * 1024 * 1024;
    const std::string element = "<v>" + std::string(193, 'x') + "</v>";
    std::string text = "<XMLSettings><preferences><RegistrySettings><a>";
    while (text.size() < kMaxFileBytes - 20000) {
        text += element;
    }
    text += "</a></RegistrySettings></preferences></XMLSettings>";
    WriteFileText(File(), text);
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.save_int32(L"w", 1));
    m_save.close();
    EXPECT_TRUE(text == FileText(File()));
}

} // namespace

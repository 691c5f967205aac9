// The layout of a settings file, and the golden file.
#include <gtest/gtest.h>

#include "settings/back_end.h"
#include "settings/xml_layout.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"
#include "tests/support/golden_file.h"

namespace {

const std::wstring kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

TEST(XmlLayout, BreaksLinesBetweenTagsAndNotInsideText) {
    EXPECT_EQ(kDeclaration + L"<a>\n<b>x</b>\n<c/>\n</a>", OneTagPerLine(L"<a><b>x</b><c/></a>"));
    EXPECT_EQ(kDeclaration + L"<a>\n</a>", OneTagPerLine(L"<a></a>"));
}

TEST(XmlLayout, TakesIndentationAway) {
    EXPECT_EQ(kDeclaration + L"<a>\n<b>\n<c>x</c>\n</b>\n</a>",
              OneTagPerLine(L"<a>\r\n\t<b>\r\n\t\t<c>x</c>\r\n\t</b>\r\n</a>\r\n"));
}

TEST(XmlLayout, KeepsWhiteSpaceThatIsAllAnElementHolds) {
    EXPECT_EQ(kDeclaration + L"<a>\n<b>  \n</b>\n</a>", OneTagPerLine(L"<a><b>  \n</b></a>"));
}

TEST(XmlLayout, KeepsWhatOnlyLooksLikeTags) {
    EXPECT_EQ(kDeclaration + L"<a>\n<!--><-->\n<b v=\"><\" w='\"><'/>\n</a>",
              OneTagPerLine(L"<a><!--><--><b v=\"><\" w='\"><'/></a>"));
    EXPECT_EQ(kDeclaration + L"<a><![CDATA[x><y]]></a>", OneTagPerLine(L"<a><![CDATA[x><y]]></a>"));
    EXPECT_EQ(kDeclaration + L"<a>\n<?p ><?>\n</a>", OneTagPerLine(L"<a><?p ><?></a>"));
}

TEST(XmlLayout, PutsTheDeclarationThatEveryFileHasInPlaceOfAnyOther) {
    EXPECT_EQ(kDeclaration + L"<a/>", OneTagPerLine(L"<?xml  version=\"1.0\" encoding=\"utf-16\"?>\r\n<a/>"));
}

TEST(XmlLayout, EndsWhateverItIsGiven) {
    for (const wchar_t* const broken : {L"", L"<", L"<!--", L"<![CDATA[", L"<?", L"<a b=\"", L"text", L"<a>x"}) {
        EXPECT_TRUE(OneTagPerLine(broken).starts_with(kDeclaration.substr(0, kDeclaration.size() - 1)));
    }
}

class SavedFile : public ComTest {
  protected:
    ScratchFolder m_folder;
    xml_save_t m_save{kSettingsPathPrefix};
};

TEST_F(SavedFile, HasALineBreakBetweenEveryPairOfAdjacentTagsAndNoneInsideText) {
    ASSERT_TRUE(m_save.open_file(L"a\\b", m_folder.File(L"f.xml")));
    ASSERT_TRUE(m_save.save_string(L"tags", L"x><y></z>"));
    ASSERT_TRUE(m_save.save_int32(L"deep/er", 1));
    ASSERT_TRUE(m_save.save_binary(L"long block", std::string(1000, 'x').data(), 1000));
    m_save.close();
    const std::string text = FileText(m_folder.File(L"f.xml"));
    EXPECT_EQ(std::string::npos, text.find("><"));
    EXPECT_NE(std::string::npos, text.find(">x&gt;&lt;y&gt;&lt;/z&gt;</tags>\n"));
    for (size_t at = text.find('\n'); at + 1 < text.size(); at = text.find('\n', at + 1)) {
        EXPECT_EQ('>', text[at - 1]);
        EXPECT_EQ('<', text[at + 1]);
    }
}

TEST_F(SavedFile, IsTheGoldenFileByteForByte) {
    ASSERT_TRUE(m_save.open_file(L"my section\\sub", m_folder.File(L"f.xml")));
    ASSERT_TRUE(m_save.save_int32(L"int32", -2147483647 - 1));
    ASSERT_TRUE(m_save.save_int64(L"int64", 9223372036854775807));
    ASSERT_TRUE(m_save.save_double(L"double", 0.1));
    ASSERT_TRUE(m_save.save_double(L"small", 4.9406564584124654e-324));
    ASSERT_TRUE(m_save.save_string(L"a string", L"a><b & \"c\" \u20ac"));
    ASSERT_TRUE(m_save.save_string(L"lines", L"one\ntwo\r\n"));
    ASSERT_TRUE(m_save.save_string(L"empty", L""));
    ASSERT_TRUE(m_save.save_binary(L"binary", "\0\1\2\xFF", 4));
    ASSERT_TRUE(m_save.save_int32(L"nested/key", 1));
    ASSERT_TRUE(m_save.open_file(L"other", L""));
    ASSERT_TRUE(m_save.save_int32(L"x", 0));
    ASSERT_TRUE(m_save.open_file(L"empty section", L""));
    m_save.close();
    EXPECT_TRUE(test_support::MatchesGolden("settings", "document", FileText(m_folder.File(L"f.xml"))));
}

TEST_F(SavedFile, IsTheSameAfterItIsOpenedAndClosedAgain) {
    ASSERT_TRUE(m_save.open_file(L"a", m_folder.File(L"f.xml")));
    ASSERT_TRUE(m_save.save_string(L"text", L" \r\n><\t "));
    ASSERT_TRUE(m_save.save_string(L"empty", L""));
    ASSERT_TRUE(m_save.save_int32(L"b/number", 1));
    m_save.close();
    const std::string first = FileText(m_folder.File(L"f.xml"));
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(m_save.open_file(L"a", m_folder.File(L"f.xml")));
        m_save.close();
        ASSERT_EQ(first, FileText(m_folder.File(L"f.xml")));
    }
}

} // namespace

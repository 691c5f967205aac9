// What the XML loader makes of documents: sections, types, conversions, sizes, sentinels.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"

namespace {

class XmlLoad : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }
    // A document with the elements in section "s", opened there.
    void Open(const std::string& elements) {
        WriteFileText(File(),
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<XMLSettings version=\"1.0\" "
                      "xmlns:dt=\"urn:schemas-microsoft-com:datatypes\">\n<preferences>\n<RegistrySettings>\n<s>" +
                          elements + "</s>\n</RegistrySettings>\n</preferences>\n</XMLSettings>\n");
        ASSERT_TRUE(m_load.open_file(L"s", File()));
    }

    ScratchFolder m_folder;
    xml_load_t m_load{kSettingsPathPrefix};
};

TEST_F(XmlLoad, ASectionPathWithABlankAndBackslashesIsTheElementPathWithUnderscoreAndSlashes) {
    WriteFileText(File(), "<XMLSettings><preferences><RegistrySettings><a_b><c><v>5</v></c></a_b></RegistrySettings>"
                          "</preferences></XMLSettings>");
    for (const wchar_t* const section : {L"a b\\c", L"\\a b\\c", L"/a b/c", L"a_b/c", L"a b/c/"}) {
        xml_load_t load(kSettingsPathPrefix);
        ASSERT_TRUE(load.open_file(section, File()));
        EXPECT_EQ(5, load.load_int32(L"v", 0)) << section;
    }
}

TEST_F(XmlLoad, KeysHaveUnderscoresForBlanksAndMayBeginWithASlash) {
    Open("<two_words>5</two_words><n><k>6</k></n>");
    EXPECT_EQ(5, m_load.load_int32(L"two words", 0));
    EXPECT_EQ(5, m_load.load_int32(L"/two words", 0));
    EXPECT_EQ(6, m_load.load_int32(L"n/k", 0));
}

TEST_F(XmlLoad, AnEmptyPathOrTheSameFileSwitchesTheSectionAndAnotherFileFails) {
    Open("<v>1</v><sub><v>2</v></sub>");
    WriteFileText(m_folder.File(L"other.xml"), "<XMLSettings/>");
    EXPECT_TRUE(m_load.open_file(L"s/sub", L""));
    EXPECT_EQ(2, m_load.load_int32(L"v", 0));
    EXPECT_TRUE(m_load.open_file(L"s", File()));
    EXPECT_EQ(1, m_load.load_int32(L"v", 0));
    EXPECT_FALSE(m_load.open_file(L"s/sub", m_folder.File(L"other.xml")));
    EXPECT_EQ(1, m_load.load_int32(L"v", 0)); // the section stayed too
    m_load.close();
    EXPECT_EQ(0, m_load.load_int32(L"v", 0));
    EXPECT_TRUE(m_load.open_file(L"s/sub", m_folder.File(L"other.xml")));
}

TEST_F(XmlLoad, ChildrenAreTheChildNodesWithoutLayout) {
    Open("\n  <one/>\n\t<two dt:dt=\"i4\">2</two>\n<three>\n<four/>\n</three>\n");
    EXPECT_EQ(3U, m_load.child_count());
    EXPECT_EQ(L"one", m_load.child_name(0));
    EXPECT_EQ(L"two", m_load.child_name(1));
    EXPECT_EQ(L"three", m_load.child_name(2));
    EXPECT_EQ(L"", m_load.child_name(3));
    EXPECT_EQ(L"", m_load.child_name(0xFFFFFFFF));
    ASSERT_TRUE(m_load.open_file(L"missing", L""));
    EXPECT_EQ(0U, m_load.child_count());
}

TEST_F(XmlLoad, ValuesConvertToTheTypeAskedForWhenTheyFit) {
    Open("<i dt:dt=\"i4\">42</i><l dt:dt=\"i8\">43</l><r dt:dt=\"r8\">44.5</r><s dt:dt=\"string\">45</s><p> +46\n</p>");
    EXPECT_EQ(42, m_load.load_int64(L"i", 0));
    EXPECT_EQ(42.0, m_load.load_double(L"i", 0));
    EXPECT_EQ(L"42", m_load.load_string(L"i", L""));
    EXPECT_EQ(43, m_load.load_int32(L"l", 0));
    EXPECT_EQ(44.5, m_load.load_double(L"r", 0));
    EXPECT_EQ(44, m_load.load_int32(L"r", 0)); // halves to even
    EXPECT_EQ(45, m_load.load_int32(L"s", 0));
    EXPECT_EQ(45.0, m_load.load_double(L"s", 0));
    EXPECT_EQ(46, m_load.load_int32(L"p", 0));
}

TEST_F(XmlLoad, WrongTypesAndValuesOutOfRangeYieldTheDefault) {
    Open("<text dt:dt=\"string\">abc</text><i dt:dt=\"i4\">99999999999</i><bad dt:dt=\"i4\">1x</bad>"
         "<l dt:dt=\"i8\">9223372036854775808</l><wide dt:dt=\"i8\">2147483648</wide><r dt:dt=\"r8\">1e999</r>"
         "<inf dt:dt=\"r8\">INF</inf><hex>0x10</hex><two>1 2</two><empty dt:dt=\"i4\"/><plus>+-1</plus>"
         "<b dt:dt=\"bin.base64\">MTIzNA==</b><sec><x>1</x></sec><odd dt:dt=\"no.such.type\">7x</odd>");
    for (const wchar_t* const key : {L"text", L"i", L"bad", L"wide", L"inf", L"hex", L"two", L"empty", L"plus", L"b",
                                     L"sec", L"odd", L"missing"}) {
        EXPECT_EQ(-77, m_load.load_int32(key, -77)) << key;
    }
    for (const wchar_t* const key : {L"text", L"bad", L"l", L"inf", L"r", L"b", L"sec"}) {
        EXPECT_EQ(-77, m_load.load_int64(key, -77)) << key;
    }
    for (const wchar_t* const key : {L"text", L"bad", L"r", L"hex", L"b", L"sec"}) {
        EXPECT_EQ(-77.0, m_load.load_double(key, -77)) << key;
    }
    for (const wchar_t* const key : {L"b", L"sec", L"missing"}) {
        EXPECT_EQ(L"default", m_load.load_string(key, L"default")) << key;
    }
}

TEST_F(XmlLoad, DoublesAreReadToTheLastBitAndNotInAnySpellingOfInfinity) {
    Open("<d dt:dt=\"r8\">2.2250738585072014E-308</d><e dt:dt=\"r8\">0.1000000000000000055511151231257827</e>"
         "<n dt:dt=\"r8\">NaN</n><m dt:dt=\"r8\"> -INF </m><x dt:dt=\"r8\">infinity</x><y dt:dt=\"r8\">nan</y>");
    EXPECT_EQ(std::numeric_limits<double>::min(), m_load.load_double(L"d", 0));
    EXPECT_EQ(0.1, m_load.load_double(L"e", 0));
    EXPECT_TRUE(std::isnan(m_load.load_double(L"n", 0)));
    EXPECT_EQ(-std::numeric_limits<double>::infinity(), m_load.load_double(L"m", 0));
    EXPECT_EQ(5.0, m_load.load_double(L"x", 5));
    EXPECT_EQ(5.0, m_load.load_double(L"y", 5));
}

TEST_F(XmlLoad, Base64MayBeBrokenIntoLinesButHoldsNoStrayCharacters) {
    Open("<good dt:dt=\"bin.base64\">AAEC\n\tAwQF\n</good><stray dt:dt=\"bin.base64\">AA*C</stray>"
         "<short dt:dt=\"bin.base64\">AAE</short><late dt:dt=\"bin.base64\">AA==AAEC</late>"
         "<wide dt:dt=\"bin.base64\">\xC3\xA9\xC3\xA9\xC3\xA9\xC3\xA9</wide><pad dt:dt=\"bin.base64\">====</pad>"
         "<text dt:dt=\"string\">AAEC</text><plain>AAEC</plain><empty dt:dt=\"bin.base64\"/>");
    unsigned char bytes[8] = {};
    std::uint32_t size = sizeof(bytes);
    ASSERT_TRUE(m_load.load_binary(L"good", bytes, size));
    ASSERT_EQ(6U, size);
    for (unsigned char i = 0; i < 6; ++i) {
        EXPECT_EQ(i, bytes[i]);
    }
    for (const wchar_t* const key : {L"stray", L"short", L"late", L"wide", L"pad", L"text", L"plain", L"missing"}) {
        size = sizeof(bytes);
        EXPECT_FALSE(m_load.load_binary(key, bytes, size)) << key;
        EXPECT_EQ(0U, size) << key;
    }
    EXPECT_TRUE(m_load.load_binary(L"empty", nullptr, size));
    EXPECT_EQ(0U, size);
}

TEST_F(XmlLoad, BinaryTellsTheStoredSizeAndNeverWritesPastTheBuffer) {
    Open("<b dt:dt=\"bin.base64\">AQIDBA==</b>");
    unsigned char bytes[4] = {9, 9, 9, 9};
    std::uint32_t size = 3;
    EXPECT_FALSE(m_load.load_binary(L"b", bytes, size));
    EXPECT_EQ(4U, size);
    EXPECT_EQ(9, bytes[0]);
    EXPECT_FALSE(m_load.load_binary(L"b", nullptr, size));
    EXPECT_EQ(4U, size);
    EXPECT_TRUE(m_load.load_binary(L"b", bytes, size));
    EXPECT_EQ(4, bytes[3]);
}

TEST_F(XmlLoad, DataTypesThatTheSettingsNeverWriteAreReadOrNotAtAll) {
    const char* const types[] = {"boolean", "bin.hex",     "char", "date",    "dateTime", "dateTime.tz", "fixed.14.4",
                                 "float",   "int",         "i1",   "i2",      "number",   "r4",          "time",
                                 "time.tz", "ui1",         "ui2",  "ui4",     "ui8",      "uri",         "uuid",
                                 "nmtoken", "no.such.one", "",     "entities"};
    const char* const texts[] = {"",           "1",   "x",    "0",           "-99999999999999999999",
                                 "2001-02-30", "1f2", "&#9;", "\xE2\x82\xAC"};
    std::string elements;
    int count = 0;
    for (const char* const type : types) {
        for (const char* const text : texts) {
            const std::string name = "v" + std::to_string(count++);
            elements.append("<" + name + " dt:dt=\"" + type + "\">" + text + "</" + name + ">");
        }
    }
    Open(elements);
    ASSERT_EQ(static_cast<std::uint32_t>(count), m_load.child_count());
    for (int i = 0; i < count; ++i) {
        const std::wstring key = L"v" + std::to_wstring(i);
        unsigned char bytes[8] = {};
        std::uint32_t size = sizeof(bytes);
        m_load.load_int32(key, 0);
        m_load.load_int64(key, 0);
        m_load.load_double(key, 0);
        m_load.load_string(key, L"");
        EXPECT_FALSE(m_load.load_binary(key, bytes, size));
        EXPECT_EQ(kAbsentValue, m_load.value_size(key));
    }
}

TEST_F(XmlLoad, ValueSizesAreInBytes) {
    Open("<i dt:dt=\"i4\">1</i><l dt:dt=\"i8\">1</l><r dt:dt=\"r8\">1</r><s dt:dt=\"string\">abc</s>"
         "<b dt:dt=\"bin.base64\">AAECAw==</b><sec/><untyped>1</untyped><bad dt:dt=\"i4\">x</bad>");
    EXPECT_EQ(4U, m_load.value_size(L"i"));
    EXPECT_EQ(8U, m_load.value_size(L"l"));
    EXPECT_EQ(8U, m_load.value_size(L"r"));
    EXPECT_EQ(6U, m_load.value_size(L"s"));
    EXPECT_EQ(4U, m_load.value_size(L"b"));
    for (const wchar_t* const key : {L"sec", L"untyped", L"bad", L"missing"}) {
        EXPECT_EQ(0xFFFFFFFFU, m_load.value_size(key)) << key;
    }
}

TEST_F(XmlLoad, AValueThatEqualsItsSentinelHasNoSizeButLoads) {
    Open("<i dt:dt=\"i4\">2147483647</i><l dt:dt=\"i8\">9223372036854775807</l><s dt:dt=\"string\">#?#?</s>");
    for (const wchar_t* const key : {L"i", L"l", L"s"}) {
        EXPECT_EQ(0xFFFFFFFFU, m_load.value_size(key)) << key;
    }
    EXPECT_EQ(0x7FFFFFFF, m_load.load_int32(L"i", 0));
    EXPECT_EQ(0x7FFFFFFFFFFFFFFF, m_load.load_int64(L"l", 0));
    EXPECT_EQ(L"#?#?", m_load.load_string(L"s", L""));
}

TEST_F(XmlLoad, AnXmlBackEndOpensNoKey) {
    xml_save_t save(kSettingsPathPrefix);
    EXPECT_FALSE(m_load.open_key(L"Software", HKEY_CURRENT_USER));
    EXPECT_FALSE(save.open_key(L"Software", HKEY_CURRENT_USER));
}

} // namespace

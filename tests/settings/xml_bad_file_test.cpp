// Files that are no settings files, or cannot be read or written.
#include <gtest/gtest.h>

#include <random>
#include <thread>
#include <utility>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"
#include "win/handle.h"

namespace {

class XmlBadFile : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }
    bool Loads() {
        xml_load_t load(kSettingsPathPrefix);
        return load.open_file(L"a", File());
    }
    // Saves one value; what the open said.
    bool Saves() {
        xml_save_t save(kSettingsPathPrefix);
        const bool opened = save.open_file(L"a", File());
        EXPECT_EQ(opened, save.save_int32(L"v", 1));
        save.close();
        return opened;
    }
    [[nodiscard]] bool IsSaved() {
        xml_load_t load(kSettingsPathPrefix);
        return load.open_file(L"a", File()) && load.load_int32(L"v", 0) == 1;
    }

    ScratchFolder m_folder;
};

TEST_F(XmlBadFile, WhatIsNoDocumentFailsToLoadAndIsReplacedByASaver) {
    const std::string texts[] = {"",
                                 " ",
                                 "not XML",
                                 "<XMLSettings>",
                                 "<a></b>",
                                 "<a/><b/>",
                                 "<a b=1/>",
                                 "<a>&unknown;</a>",
                                 "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                                 "<a>\xFF\xFE</a>",
                                 std::string("<a>\0</a>", 8),
                                 std::string(100000, '<'),
                                 std::string("\x7F"
                                             "ELF\2\1\1\0\0\0",
                                             10)};
    for (const std::string& text : texts) {
        WriteFileText(File(), text);
        EXPECT_FALSE(Loads()) << text.substr(0, 40);
        EXPECT_TRUE(Saves()) << text.substr(0, 40);
        EXPECT_TRUE(IsSaved()) << text.substr(0, 40);
    }
}

TEST_F(XmlBadFile, DeeplyNestedDocumentsNeitherLoadNorCrash) {
    std::string text;
    for (int i = 0; i < 100000; ++i) {
        text += "<d>";
    }
    WriteFileText(File(), text);
    EXPECT_FALSE(Loads());
}

TEST_F(XmlBadFile, DamagedDocumentsLoadOrFailAndAreReadToTheEnd) {
    {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", File()));
        ASSERT_TRUE(save.save_string(L"s", L" a><b\r\n"));
        ASSERT_TRUE(save.save_double(L"r", -1.5e-300));
        ASSERT_TRUE(save.save_binary(L"b", "0123456789", 10));
        save.close();
    }
    const std::string whole = FileText(File());
    std::mt19937 random(4711);
    int loaded = 0;
    constexpr int kDamages = 400;
    for (int i = 0; i < kDamages; ++i) {
        std::string damaged = whole;
        const size_t at = random() % whole.size();
        if (i % 4 == 0) {
            damaged.resize(at);
        } else {
            damaged[at] = static_cast<char>(i % 4 == 1 ? random() : "<>&\"'/= "[random() % 8]);
        }
        WriteFileText(File(), damaged);
        xml_load_t load(kSettingsPathPrefix);
        if (load.open_file(L"a", File())) {
            ++loaded;
            unsigned char block[10] = {};
            std::uint32_t size = sizeof(block);
            load.load_string(L"s", L"");
            load.load_double(L"r", 0);
            load.load_binary(L"b", block, size);
            load.child_name(load.child_count());
        }
    }
    EXPECT_GT(loaded, 0);
    EXPECT_LT(loaded, kDamages);
}

// As a file in UTF-16 with a byte order mark has it.
std::string Wide(const std::string& text) {
    std::string wide = "\xFF\xFE";
    for (const char c : text) {
        wide += c;
        wide += '\0';
    }
    return wide;
}

TEST_F(XmlBadFile, ADocumentTypeIsRefusedInAnyEncodingSoThatNoEntityIsExpandedAndTheFileStays) {
    const std::string text =
        "<!DOCTYPE a [<!ENTITY x \"y\"><!ENTITY f SYSTEM \"file:///c:/windows/win.ini\">]><a>&x;</a>";
    std::string turned = Wide(text);
    for (size_t i = 0; i + 1 < turned.size(); i += 2) {
        std::swap(turned[i], turned[i + 1]);
    }
    const std::string files[] = {text,
                                 Wide(text),
                                 turned,
                                 Wide(text).substr(2),
                                 "\xEF\xBB\xBF" + text,
                                 "<?xml version=\"1.0\"?>\n<!-- <a> -->\n<?b '?>\n" + text,
                                 "<!DOCTYPE html>\n<html><body>not closed</html>"};
    for (const std::string& file : files) {
        WriteFileText(File(), file);
        EXPECT_FALSE(Loads()) << file;
        EXPECT_FALSE(Saves()) << file;
        EXPECT_EQ(file, FileText(File()));
    }
}

TEST_F(XmlBadFile, ADocumentTypeInACommentOrInCharacterDataIsNone) {
    const std::string before = "<XMLSettings><preferences><RegistrySettings><a>";
    const std::string after = "<w>7</w></a></RegistrySettings></preferences></XMLSettings>";
    const std::string comment = "<!-- <!DOCTYPE a> -->";
    for (const std::string& part : {comment, std::string("<c><![CDATA[<!DOCTYPE a>]]></c>")}) {
        for (const std::string& file :
             {before + part + after, Wide(before + part + after), comment + before + part + after}) {
            WriteFileText(File(), file);
            EXPECT_TRUE(Loads()) << file;
            EXPECT_TRUE(Saves()) << file;
            EXPECT_TRUE(IsSaved()) << file;
            EXPECT_NE(std::string::npos, FileText(File()).find(part)) << file;
            EXPECT_NE(std::string::npos, FileText(File()).find("<w>7</w>")) << file;
        }
    }
}

TEST_F(XmlBadFile, AnEncodingThatHidesMarkupIsRefusedAndTheFileStays) {
    for (const char* const encoding : {"UTF-7", "ISO-2022-JP", "HZ-GB-2312", "IBM037", "UTF-16LE"}) {
        const std::string file =
            std::string("<?xml version=\"1.0\" encoding=\"") + encoding + "\"?><XMLSettings></XMLSettings>";
        WriteFileText(File(), file);
        EXPECT_FALSE(Loads()) << encoding;
        EXPECT_FALSE(Saves()) << encoding;
        EXPECT_EQ(file, FileText(File()));
    }
    for (const char* const encoding : {"utf-8", "US-ASCII", "ISO-8859-1", "windows-1252"}) {
        WriteFileText(File(),
                      std::string("<?xml version='1.0' encoding='") + encoding + "'?><XMLSettings></XMLSettings>");
        EXPECT_TRUE(Loads()) << encoding;
        EXPECT_TRUE(Saves()) << encoding;
    }
}

// A document with so many attributes on one element, or on one within another each.
std::string WithAttributes(int count, bool nested) {
    std::string text = "<XMLSettings";
    for (int i = 0; i < count; ++i) {
        text += std::string(nested ? "><n" : "") + " a" + std::to_string(i) + "='1='";
    }
    text += ">";
    for (int i = 0; nested && i < count; ++i) {
        text += "</n>";
    }
    return text + "</XMLSettings>";
}

TEST_F(XmlBadFile, MoreAttributesThanAParserComparesQuicklyAreRefusedAndTheFileStays) {
    WriteFileText(File(), WithAttributes(256, false));
    EXPECT_TRUE(Loads());
    WriteFileText(File(), WithAttributes(200, true));
    EXPECT_TRUE(Loads());
    for (const std::string& text :
         {WithAttributes(257, false), WithAttributes(257, true), WithAttributes(50000, false)}) {
        WriteFileText(File(), text);
        EXPECT_FALSE(Loads());
        EXPECT_FALSE(Saves());
        EXPECT_TRUE(text == FileText(File()));
    }
}

TEST_F(XmlBadFile, WhatASaverAddsIsNeverOneAttributeTooMany) {
    WriteFileText(File(), WithAttributes(256, false));
    for (int i = 0; i < 2; ++i) {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", File()));
        EXPECT_TRUE(save.save_int32(L"v", 1));
        EXPECT_TRUE(save.save_string(L"spaces", L"  "));
        save.close();
        EXPECT_TRUE(IsSaved());
    }
    WriteFileText(
        File(), "<a" + [] {
            std::string own;
            for (int i = 0; i < 50000; ++i) {
                own += " dt:dt='i4'";
            }
            return own;
        }() + "/>");
    EXPECT_FALSE(Saves()); // nor are these free of charge
}

TEST_F(XmlBadFile, MoreElementsThanAFileOfValuesHasAreRefusedAndTheFileStays) {
    constexpr int kMaxMarkup = 256 * 1024;
    const auto withElements = [](int count) {
        std::string text = "<x>";
        for (int i = 0; i < count; ++i) {
            text += "<a/>";
        }
        return text + "</x>";
    };
    WriteFileText(File(), withElements(kMaxMarkup - 2));
    EXPECT_TRUE(Loads());
    const std::string tooMany = withElements(kMaxMarkup - 1);
    WriteFileText(File(), tooMany);
    EXPECT_FALSE(Loads());
    EXPECT_FALSE(Saves());
    EXPECT_TRUE(tooMany == FileText(File()));
}

TEST_F(XmlBadFile, OtherEncodingsAreReadAndTheFileIsUtf8Afterwards) {
    const std::wstring text = L"\uFEFF<?xml version=\"1.0\" encoding=\"UTF-16\"?><XMLSettings><preferences>"
                              L"<RegistrySettings><a><s>\u20ac</s></a></RegistrySettings></preferences></XMLSettings>";
    WriteFileText(File(), std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)));
    ASSERT_TRUE(Saves());
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    EXPECT_EQ(L"\u20ac", load.load_string(L"s", L""));
    EXPECT_TRUE(FileText(File()).starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<XMLSettings>"));
}

TEST_F(XmlBadFile, AFileOf100MebibytesIsRefusedAndStays) {
    constexpr LONG kBytes = 100 * 1024 * 1024;
    {
        const win::FileHandle file(
            CreateFileW(File().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        SetFilePointer(file.Get(), kBytes, nullptr, FILE_BEGIN);
        ASSERT_TRUE(SetEndOfFile(file.Get()));
    }
    EXPECT_FALSE(Loads());
    EXPECT_FALSE(Saves());
    WIN32_FILE_ATTRIBUTE_DATA facts{};
    GetFileAttributesExW(File().c_str(), GetFileExInfoStandard, &facts);
    EXPECT_EQ(static_cast<DWORD>(kBytes), facts.nFileSizeLow);
}

TEST_F(XmlBadFile, AReadOnlyFileLoadsButIsRefusedBySavers) {
    ASSERT_TRUE(Saves());
    const std::string before = FileText(File());
    SetFileAttributesW(File().c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(Loads());
    EXPECT_FALSE(Saves());
    EXPECT_EQ(before, FileText(File()));
}

TEST_F(XmlBadFile, AFileThatBecomesReadOnlyWhileItIsOpenStaysWholeAndNothingIsLeftBesideIt) {
    ASSERT_TRUE(Saves());
    const std::string before = FileText(File());
    xml_save_t save(kSettingsPathPrefix);
    ASSERT_TRUE(save.open_file(L"a", File()));
    ASSERT_TRUE(save.save_int32(L"v", 2));
    SetFileAttributesW(File().c_str(), FILE_ATTRIBUTE_READONLY);
    save.close();
    EXPECT_EQ(before, FileText(File()));
    EXPECT_EQ(std::vector<std::wstring>{L"f.xml"}, m_folder.FileNames());
}

TEST_F(XmlBadFile, TwoSaversAtOnceLeaveOneWholeFile) {
    ASSERT_TRUE(Saves());
    const auto saveOften = [this](std::int32_t value) {
        CoInitialize(nullptr);
        for (int i = 0; i < 30; ++i) {
            xml_save_t save(kSettingsPathPrefix);
            EXPECT_TRUE(save.open_file(L"a", File()));
            EXPECT_TRUE(save.save_int32(L"v", value));
            EXPECT_TRUE(save.save_string(L"s", std::wstring(10000, L'x')));
            save.close();
            EXPECT_TRUE(Loads());
        }
        CoUninitialize();
    };
    std::thread other(saveOften, 2);
    saveOften(3);
    other.join();
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    const std::int32_t value = load.load_int32(L"v", 0);
    EXPECT_TRUE(value == 2 || value == 3) << value;
    EXPECT_EQ(std::wstring(10000, L'x'), load.load_string(L"s", L""));
    EXPECT_EQ(std::vector<std::wstring>{L"f.xml"}, m_folder.FileNames());
}

TEST_F(XmlBadFile, AFileThatSomebodyElseHoldsIsRefused) {
    ASSERT_TRUE(Saves());
    const win::FileHandle held(
        CreateFileW(File().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(static_cast<bool>(held));
    EXPECT_FALSE(Loads());
    EXPECT_FALSE(Saves());
}

TEST_F(XmlBadFile, MissingFilesAndFoldersAndFoldersForFilesAreRefused) {
    xml_load_t load(kSettingsPathPrefix);
    xml_save_t save(kSettingsPathPrefix);
    EXPECT_FALSE(load.open_file(L"a", File()));
    const std::wstring paths[] = {
        m_folder.File(L"missing\\f.xml"), m_folder.File(L""),        L"http://127.0.0.1:1/f.xml",    L"Q:\\f.xml",
        m_folder.File(L"a?b*.xml"),       std::wstring(40000, L'x'), File() + std::wstring(1, L'\0')};
    for (const std::wstring& path : paths) {
        EXPECT_FALSE(load.open_file(L"a", path)) << path.substr(0, 80);
        EXPECT_FALSE(save.open_file(L"a", path)) << path.substr(0, 80);
    }
    EXPECT_TRUE(m_folder.FileNames().empty());
}

TEST_F(XmlBadFile, ARootInANamespaceIsRefusedBySaversForItsElementsWouldNotBeFoundAgain) {
    WriteFileText(File(), "<XMLSettings xmlns=\"urn:other\"/>");
    EXPECT_TRUE(Loads());
    EXPECT_FALSE(Saves());
    EXPECT_EQ("<XMLSettings xmlns=\"urn:other\"/>", FileText(File()));
}

TEST_F(XmlBadFile, WithoutComNothingOpens) {
    CoUninitialize();
    WriteFileText(File(), "<XMLSettings/>");
    EXPECT_FALSE(Loads());
    EXPECT_FALSE(Saves());
    CoInitialize(nullptr);
    EXPECT_TRUE(Loads());
}

} // namespace

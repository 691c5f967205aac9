// What becomes of the old file, and of what stands beside it, when a saver writes.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/scratch_folder.h"
#include "win/handle.h"

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class XmlReplace : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }
    static void Save(const std::wstring& file, std::int32_t value) {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", file));
        ASSERT_TRUE(save.save_int32(L"v", value));
        save.close();
    }
    static std::int32_t Saved(const std::wstring& file) {
        xml_load_t load(kSettingsPathPrefix);
        return load.open_file(L"a", file) ? load.load_int32(L"v", -1) : -2;
    }
    static win::FileHandle Hold(const std::wstring& file, DWORD share) {
        return win::FileHandle(
            CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    [[nodiscard]] std::vector<std::wstring> OnlyTheFile() const { return {L"f.xml"}; }

    ScratchFolder m_folder;
};

TEST_F(XmlReplace, AFileThatSomebodyReadsAllTheTimeGetsItsValuesAllTheSame) {
    Save(File(), 1);
    for (const DWORD share : {kShareAll, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE}}) {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", File()));
        ASSERT_TRUE(save.save_int32(L"v", static_cast<std::int32_t>(share)));
        const win::FileHandle reader = Hold(File(), share);
        ASSERT_TRUE(static_cast<bool>(reader));
        save.close();
        EXPECT_EQ(static_cast<std::int32_t>(share), Saved(File()));
        EXPECT_EQ(OnlyTheFile(), m_folder.FileNames());
    }
}

TEST_F(XmlReplace, AShorterFileWrittenUnderAReaderHasNothingOfTheLongerOneAtItsEnd) {
    {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", File()));
        ASSERT_TRUE(save.save_string(L"long", std::wstring(100000, L'x')));
        save.close();
    }
    const win::FileHandle reader = Hold(File(), kShareAll);
    ASSERT_GT(FileText(File()).size(), 100000U);
    xml_save_t save(kSettingsPathPrefix);
    ASSERT_TRUE(save.open_file(L"a", File()));
    ASSERT_TRUE(save.save_int32(L"long", 2));
    save.close();
    EXPECT_LT(FileText(File()).size(), 1000U);
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    EXPECT_EQ(2, load.load_int32(L"long", 0));
}

TEST_F(XmlReplace, NoneOfManySavesIsLostBesideALoaderThatNeverRests) {
    Save(File(), -1);
    std::atomic<bool> done{false};
    std::thread reader([&] {
        CoInitialize(nullptr);
        while (!done) {
            Saved(File());
        }
        CoUninitialize();
    });
    for (std::int32_t i = 0; i < 150; ++i) {
        xml_save_t save(kSettingsPathPrefix);
        const bool saved = save.open_file(L"a", File()) && save.save_int32(L"v", i);
        save.close();
        EXPECT_TRUE(saved) << i;
        EXPECT_EQ(i, Saved(File()));
    }
    done = true;
    reader.join();
    EXPECT_EQ(OnlyTheFile(), m_folder.FileNames());
}

TEST_F(XmlReplace, AFileThatCannotBeWrittenToTheLastTryStaysWholeAndNothingIsLeftBesideIt) {
    Save(File(), 1);
    const std::string before = FileText(File());
    xml_save_t save(kSettingsPathPrefix);
    ASSERT_TRUE(save.open_file(L"a", File()));
    ASSERT_TRUE(save.save_int32(L"v", 2));
    {
        const win::FileHandle held = Hold(File(), FILE_SHARE_READ);
        ASSERT_TRUE(static_cast<bool>(held));
        save.close();
    }
    EXPECT_EQ(before, FileText(File()));
    EXPECT_EQ(OnlyTheFile(), m_folder.FileNames());
    Save(File(), 3);
    EXPECT_EQ(3, Saved(File()));
}

TEST_F(XmlReplace, NamesAsLongAsTheFileSystemTakesAreSavedAndLongerOnesRefused) {
    for (const size_t chars : {244, 245, 250, 255}) {
        const std::wstring file = m_folder.File(std::wstring(chars - 4, L'n') + L".xml");
        Save(L"\\\\?\\" + file, 1);
        EXPECT_EQ(1, Saved(L"\\\\?\\" + file)) << chars;
        Save(L"\\\\?\\" + file, 2); // and again over the first
        EXPECT_EQ(2, Saved(L"\\\\?\\" + file)) << chars;
    }
    xml_save_t save(kSettingsPathPrefix);
    EXPECT_FALSE(save.open_file(L"a", L"\\\\?\\" + m_folder.File(std::wstring(252, L'n') + L".xml")));
    EXPECT_EQ(4U, m_folder.FileNames().size());
}

TEST_F(XmlReplace, NoFileThatStandsBesideItIsOverwrittenOrRemoved) {
    const std::wstring process = std::to_wstring(GetCurrentProcessId());
    const std::wstring names[] = {File() + L"." + process + L"-" + std::to_wstring(GetCurrentThreadId()) + L".tmp",
                                  File() + L".tmp", m_folder.File(L"settings.tmp")};
    for (const std::wstring& name : names) {
        WriteFileText(name, "somebody else's");
    }
    Save(File(), 1);
    Save(File(), 2);
    EXPECT_EQ(2, Saved(File()));
    for (const std::wstring& name : names) {
        EXPECT_EQ("somebody else's", FileText(name));
    }
    EXPECT_EQ(1 + std::size(names), m_folder.FileNames().size());
}

TEST_F(XmlReplace, AHiddenFileStaysHiddenAndAnOrdinaryOneOrdinary) {
    Save(File(), 1);
    EXPECT_EQ(0U, GetFileAttributesW(File().c_str()) & FILE_ATTRIBUTE_HIDDEN);
    ASSERT_TRUE(SetFileAttributesW(File().c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
    const DWORD before = GetFileAttributesW(File().c_str());
    ASSERT_NE(0U, before & FILE_ATTRIBUTE_HIDDEN);
    Save(File(), 2);
    EXPECT_EQ(2, Saved(File()));
    EXPECT_EQ(before & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM),
              GetFileAttributesW(File().c_str()) & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM));
}

// The access control list of a file, byte by byte.
std::vector<BYTE> Rights(const std::wstring& file) {
    DWORD bytes = 0;
    GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &bytes);
    std::vector<BYTE> rights(bytes);
    EXPECT_TRUE(GetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, rights.data(), bytes, &bytes));
    return rights;
}

// To a file that belongs to the user of this process: this user alone may use it.
void GiveToTheOwnerAlone(const std::wstring& file) {
    DWORD bytes = 0;
    GetFileSecurityW(file.c_str(), OWNER_SECURITY_INFORMATION, nullptr, 0, &bytes);
    std::vector<BYTE> owned(bytes);
    PSID owner = nullptr;
    BOOL defaulted = FALSE;
    ASSERT_TRUE(GetFileSecurityW(file.c_str(), OWNER_SECURITY_INFORMATION, owned.data(), bytes, &bytes));
    ASSERT_TRUE(GetSecurityDescriptorOwner(owned.data(), &owner, &defaulted));
    alignas(ACL) BYTE room[512] = {};
    auto* const list = reinterpret_cast<ACL*>(room);
    SECURITY_DESCRIPTOR descriptor{};
    ASSERT_TRUE(InitializeAcl(list, sizeof(room), ACL_REVISION));
    ASSERT_TRUE(AddAccessAllowedAce(list, ACL_REVISION, GENERIC_ALL, owner));
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE));
    ASSERT_TRUE(SetFileSecurityW(file.c_str(), DACL_SECURITY_INFORMATION, &descriptor));
}

TEST_F(XmlReplace, AFileKeepsItsRights) {
    Save(File(), 1);
    const std::vector<BYTE> usual = Rights(File());
    GiveToTheOwnerAlone(File());
    const std::vector<BYTE> narrow = Rights(File());
    ASSERT_NE(usual, narrow);
    Save(File(), 2);
    EXPECT_EQ(2, Saved(File()));
    EXPECT_EQ(narrow, Rights(File()));
}

TEST_F(XmlReplace, AFileBehindALinkIsWrittenAndTheLinkStays) {
    const std::wstring target = m_folder.File(L"target.xml");
    Save(target, 1);
    ASSERT_TRUE(MakeFileLink(File(), target));
    Save(File(), 2);
    EXPECT_EQ(2, Saved(target));
    Save(target, 3);
    EXPECT_EQ(3, Saved(File())); // it leads there still
    EXPECT_EQ(2U, m_folder.FileNames().size());
    EXPECT_TRUE(RemoveFileLink(File()));
    EXPECT_EQ(3, Saved(target));
}

} // namespace

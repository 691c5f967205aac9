// The tries of a replacement, one by one, and the file that takes the place of another.
#include "settings/file_replace.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/settings/scratch_folder.h"
#include "win/handle.h"
#include "win/temporary_file.h"

namespace {

win::FileHandle Hold(const std::wstring& file, DWORD share) {
    return win::FileHandle(
        CreateFileW(file.c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// Tells files apart, whatever their names.
DWORD NumberOf(const std::wstring& file) {
    BY_HANDLE_FILE_INFORMATION facts{};
    EXPECT_TRUE(GetFileInformationByHandle(Hold(file, FILE_SHARE_READ | FILE_SHARE_WRITE).Get(), &facts));
    return facts.nFileIndexLow;
}

class FileReplace : public ::testing::Test {
  protected:
    void SetUp() override { WriteFileText(m_file, "old"); }
    [[nodiscard]] std::vector<std::wstring> OnlyTheFile() const { return {L"f"}; }

    ScratchFolder m_folder;
    std::wstring m_file = m_folder.File(L"f");
};

TEST_F(FileReplace, AnotherFileTakesThePlaceAsSoonAsTheOldOneIsLetGo) {
    const DWORD before = NumberOf(m_file);
    win::FileHandle reader = Hold(m_file, FILE_SHARE_READ | FILE_SHARE_WRITE);
    std::vector<int> failures;

    EXPECT_TRUE(ReplaceFileBytes(m_file, "new", [&](int count) {
        failures.push_back(count);
        EXPECT_EQ("old", FileText(m_file)); // nobody sees half a file
        EXPECT_EQ(2U, m_folder.FileNames().size());
        if (count == 3) {
            reader.Reset();
        }
        return true;
    }));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), failures);
    EXPECT_EQ("new", FileText(m_file));
    EXPECT_NE(before, NumberOf(m_file));
    EXPECT_EQ(OnlyTheFile(), m_folder.FileNames());
}

TEST_F(FileReplace, AfterTheLastTryTheOldFileIsWrittenInPlace) {
    const DWORD before = NumberOf(m_file);
    const win::FileHandle reader = Hold(m_file, FILE_SHARE_READ | FILE_SHARE_WRITE);
    int last = 0;
    EXPECT_TRUE(ReplaceFileBytes(m_file, "new!", [&last](int count) {
        last = count;
        return count < 7;
    }));
    EXPECT_EQ(7, last);
    EXPECT_EQ("new!", FileText(m_file));
    EXPECT_EQ(before, NumberOf(m_file));
    EXPECT_EQ(OnlyTheFile(), m_folder.FileNames());
}

TEST_F(FileReplace, TheTriesHaveAnEnd) {
    int tries = 0;
    while (PauseBriefly(++tries)) {
        ASSERT_LT(tries, 100);
    }
    EXPECT_GT(tries, 10);
}

std::wstring TakenName() {
    return L"taken";
}

std::wstring TakenTwiceThenFree() {
    static int s_calls = 0;
    return ++s_calls <= 2 ? L"taken" : L"free";
}

TEST_F(FileReplace, ATemporaryFileIsNeverOneThatIsThereAlready) {
    const std::wstring taken = m_folder.File(L"taken");
    WriteFileText(taken, "somebody else's");
    {
        win::TemporaryFile file(TakenTwiceThenFree);
        EXPECT_TRUE(file.Create(m_folder.File(L""), GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL));
        EXPECT_EQ(3U, m_folder.FileNames().size());
        win::TemporaryFile none(TakenName);
        EXPECT_FALSE(none.Create(m_folder.File(L""), GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL));
        EXPECT_FALSE(none.MoveTo(m_file));
        EXPECT_FALSE(none.MoveToFreePath(m_folder.File(L"new")));
    }
    EXPECT_EQ("somebody else's", FileText(taken));
    EXPECT_EQ("old", FileText(m_file));
    EXPECT_EQ(2U, m_folder.FileNames().size()); // what it made is gone
}

TEST_F(FileReplace, ATemporaryFileTakesAFreePathAndLeavesATakenOneAlone) {
    win::TemporaryFile file(TakenName);
    EXPECT_TRUE(file.Create(m_folder.File(L""), GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL));
    EXPECT_FALSE(file.MoveToFreePath(m_file));
    EXPECT_EQ("old", FileText(m_file));
    EXPECT_TRUE(file.MoveToFreePath(m_folder.File(L"new")));
    EXPECT_EQ((std::vector<std::wstring>{L"f", L"new"}), m_folder.FileNames());
}

TEST_F(FileReplace, NoTwoTemporaryNamesAreAlikeAndAllAreShort) {
    const std::wstring first = win::TemporaryFile::RandomName(L"settings");
    const std::wstring second = win::TemporaryFile::RandomName(L"settings");
    EXPECT_NE(first, second);
    // All but the fixed parts differ from run to run: not the numbers of the process and the thread.
    EXPECT_EQ(first.size(), second.size());
    EXPECT_LT(first.size(), 64U);
    EXPECT_GE(first.size(), std::wstring(L"settings-").size() + 32 + std::wstring(L".tmp").size());
}

} // namespace

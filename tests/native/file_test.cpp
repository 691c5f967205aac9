// Files and directories answer as documented. Built for both lanes.
#include <gtest/gtest.h>

#include <string>

#include "win/handle.h"
#include "win/wide_string.h"

namespace {

using win::FileHandle;

WideString TemporaryRoot() {
    WCHAR buffer[MAX_PATH + 1] = {};
    EXPECT_GT(GetTempPathW(MAX_PATH + 1, buffer), 0U);
    return buffer;
}

class FileContract : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(CreateDirectoryW(m_folder.c_str(), nullptr)); }
    void TearDown() override {
        DeleteFileW(m_path.c_str());
        EXPECT_TRUE(RemoveDirectoryW(m_folder.c_str()));
    }

    [[nodiscard]] FileHandle Open(DWORD access, DWORD share, DWORD disposition) const {
        return FileHandle(
            CreateFileW(m_path.c_str(), access, share, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    void Write(std::string_view text) const {
        const FileHandle file = Open(GENERIC_WRITE, 0, CREATE_ALWAYS);
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
        ASSERT_EQ(written, text.size());
    }
    [[nodiscard]] std::string Read() const {
        const FileHandle file = Open(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING);
        char buffer[64];
        DWORD read = 0;
        EXPECT_TRUE(ReadFile(file.Get(), buffer, sizeof(buffer), &read, nullptr));
        return std::string(buffer, read);
    }

    const WideString m_folder = TemporaryRoot() + OLESTR("qrx_native_") + ToWideDecimal(GetCurrentProcessId());
    const WideString m_path = m_folder + OLESTR("\\file.txt");
};

TEST_F(FileContract, OpenAlwaysKeepsTheContentAndTellsThatItWasThere) {
    const FileHandle created = Open(GENERIC_WRITE, 0, OPEN_ALWAYS);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SUCCESS));
    EXPECT_TRUE(created);
}

TEST_F(FileContract, OpenAlwaysAppendsAfterSeekingToTheEnd) {
    Write("one");
    {
        const FileHandle file = Open(GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
        EXPECT_EQ(SetFilePointer(file.Get(), 0, nullptr, FILE_END), 3U);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(file.Get(), "two", 3, &written, nullptr));
    }
    EXPECT_EQ(Read(), "onetwo");
}

TEST_F(FileContract, CreateAlwaysEmptiesTheFile) {
    Write("one");
    EXPECT_TRUE(Open(GENERIC_WRITE, 0, CREATE_ALWAYS));
    EXPECT_EQ(Read(), "");
}

TEST_F(FileContract, CreateNewRefusesAnExistingFile) {
    Write("one");
    EXPECT_FALSE(Open(GENERIC_WRITE, 0, CREATE_NEW));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_EXISTS));
}

TEST_F(FileContract, MissingFileAndMissingFolderDiffer) {
    EXPECT_FALSE(Open(GENERIC_READ, 0, OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    const WideString deep = m_folder + OLESTR("\\missing\\file.txt");
    EXPECT_EQ(CreateFileW(deep.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(FileContract, WriterThatSharesReadingAdmitsReadersAndNoWriter) {
    const FileHandle writer = Open(GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS);
    EXPECT_TRUE(Open(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
    EXPECT_FALSE(Open(GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    EXPECT_FALSE(Open(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING)) << "a reader that forbids the open writer";
    EXPECT_FALSE(DeleteFileW(m_path.c_str()));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
}

TEST_F(FileContract, RefusedCreateAlwaysLeavesTheContent) {
    Write("one");
    const FileHandle reader = Open(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    EXPECT_FALSE(Open(GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS));
    EXPECT_EQ(Read(), "one");
}

TEST_F(FileContract, ClosingEndsTheShareMode) {
    Open(GENERIC_WRITE, 0, CREATE_ALWAYS).Reset();
    EXPECT_TRUE(Open(GENERIC_WRITE, 0, OPEN_EXISTING));
}

TEST_F(FileContract, PositionsPastFourGibibytes) {
    const FileHandle file = Open(GENERIC_WRITE, 0, CREATE_ALWAYS);
    LARGE_INTEGER distance;
    distance.QuadPart = 0x1'0000'0010;
    LARGE_INTEGER position = {};
    EXPECT_TRUE(SetFilePointerEx(file.Get(), distance, &position, FILE_BEGIN));
    EXPECT_EQ(position.QuadPart, distance.QuadPart);
    LONG high = 0;
    EXPECT_EQ(SetFilePointer(file.Get(), -0x10, &(high = -1), FILE_CURRENT), 0U);
    EXPECT_EQ(high, 1);
    distance.QuadPart = -1;
    EXPECT_FALSE(SetFilePointerEx(file.Get(), distance, nullptr, FILE_BEGIN));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NEGATIVE_SEEK));
}

TEST_F(FileContract, HandleWithoutTheRightIsRefused) {
    Write("one");
    const FileHandle reader = Open(GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    DWORD written = 1;
    EXPECT_FALSE(WriteFile(reader.Get(), "x", 1, &written, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
    EXPECT_EQ(written, 0U);
}

TEST_F(FileContract, ReadingAtTheEndSucceedsWithNothing) {
    Write("");
    EXPECT_EQ(Read(), "");
}

TEST_F(FileContract, DirectoryThatExistsOrHasNoParentIsNotCreated) {
    EXPECT_FALSE(CreateDirectoryW(m_folder.c_str(), nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ALREADY_EXISTS));
    EXPECT_FALSE(CreateDirectoryW((m_folder + OLESTR("\\a\\b")).c_str(), nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
}

TEST_F(FileContract, BothSeparatorsAndDoubledOnesNameTheSameFile) {
    Write("one");
    const WideString forward = m_folder + OLESTR("/file.txt");
    const WideString doubled = m_folder + OLESTR("\\\\file.txt");
    EXPECT_NE(GetFileAttributesW(forward.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(GetFileAttributesW(doubled.c_str()), INVALID_FILE_ATTRIBUTES);
    EXPECT_NE(GetFileAttributesW(m_folder.c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0U);
}

} // namespace

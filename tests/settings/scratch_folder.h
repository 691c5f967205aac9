// ScratchFolder: a folder of one test's own for settings files, removed with all that is in it.
//
// Owner: itself. Threads: one. Errors: a file that cannot be written is a test failure.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "win/platform.h"

class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] std::wstring File(const std::wstring& name) const { return m_path + L"\\" + name; }
    [[nodiscard]] std::vector<std::wstring> FileNames() const;

  private:
    std::wstring m_path;
};

void WriteFileText(const std::wstring& path, const std::string& text);
[[nodiscard]] std::string FileText(const std::wstring& path);

// A symbolic link. Where the system makes none, its host is asked to; false when neither does.
[[nodiscard]] bool MakeFileLink(const std::wstring& link, const std::wstring& target);
// Not what it leads to, which is there.
[[nodiscard]] bool RemoveFileLink(const std::wstring& link);

// COM for a suite's thread, as an application has it.
class ComTest : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { CoInitialize(nullptr); }
    static void TearDownTestSuite() { CoUninitialize(); }
};

#include "tests/settings/scratch_folder.h"

#include "tests/log/log_directory.h"
#include "win/handle.h"

ScratchFolder::ScratchFolder() {
    static int s_count = 0;
    wchar_t root[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, root);
    m_path =
        std::wstring(root) + L"qrx_settings_" + std::to_wstring(GetTickCount64()) + L"_" + std::to_wstring(++s_count);
    EXPECT_TRUE(CreateDirectoryW(m_path.c_str(), nullptr));
}

ScratchFolder::~ScratchFolder() {
    for (const std::wstring& name : FileNames()) {
        SetFileAttributesW(File(name).c_str(), FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(File(name).c_str());
    }
    EXPECT_TRUE(RemoveDirectoryW(m_path.c_str()));
}

std::vector<std::wstring> ScratchFolder::FileNames() const {
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW(File(L"*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            names.emplace_back(found.cFileName);
        }
    }
    FindClose(search);
    return names;
}

void WriteFileText(const std::wstring& path, const std::string& text) {
    const win::FileHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr));
    EXPECT_EQ(text.size(), written);
}

std::string FileText(const std::wstring& path) {
    return ReadWholeFile(path);
}

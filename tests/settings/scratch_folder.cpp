#include "tests/settings/scratch_folder.h"

#include "tests/log/log_directory.h"
#include "win/handle.h"

#include <chrono>
#include <thread>

ScratchFolder::ScratchFolder() {
    static int s_count = 0;
    wchar_t root[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, root);
    // No other process has the number while this one runs; what an older one left is not taken over.
    do {
        m_path = std::wstring(root) + L"qrx_settings_" + std::to_wstring(GetCurrentProcessId()) + L"_" +
                 std::to_wstring(++s_count);
    } while (GetFileAttributesW(m_path.c_str()) != INVALID_FILE_ATTRIBUTES);
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

namespace {

bool IsThere(const std::wstring& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// The path as the host sees it, empty on Windows.
std::string HostPath(const std::wstring& path) {
    using Translate = char*(CDECL*)(const wchar_t*);
    const auto translate = reinterpret_cast<Translate>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    char* const text = translate == nullptr ? nullptr : translate(path.c_str());
    const std::string host = text == nullptr ? std::string() : text;
    HeapFree(GetProcessHeap(), 0, text);
    return host;
}

// In quotes, as the host sees it. Only the folder need be there.
std::wstring Quoted(const std::wstring& path) {
    const size_t name = path.rfind(L'\\') + 1;
    const std::string folder = HostPath(path.substr(0, name - 1));
    return L"\"" + std::wstring(folder.begin(), folder.end()) + L"/" + path.substr(name) + L"\"";
}

// A program of the host has no handle that one could wait for: its work is waited for.
template <typename Done>
bool RunOnHost(const wchar_t* program, std::wstring command, Done&& done) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        return false;
    }
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    while (!done() && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return done();
}

} // namespace

bool MakeFileLink(const std::wstring& link, const std::wstring& target) {
    // Some systems answer that they made one, and did not.
    if (CreateSymbolicLinkW(link.c_str(), target.c_str(), 0) && IsThere(link)) {
        return true;
    }
    return RunOnHost(L"Z:\\bin\\ln", L"ln -s " + Quoted(target) + L" " + Quoted(link), [&] { return IsThere(link); });
}

bool RemoveFileLink(const std::wstring& link) {
    return HostPath(link).empty() ? DeleteFileW(link.c_str()) != FALSE
                                  : RunOnHost(L"Z:\\bin\\rm", L"rm " + Quoted(link), [&] { return !IsThere(link); });
}

// A directory of a test's own for log files, removed with what the test names, and file helpers that need no C++
// runtime with wide paths.
#pragma once

#include <string>
#include <vector>

#include "win/handle.h"
#include "win/platform.h"
#include "win/wide_string.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

inline bool FileExists(const WideString& path) {
    const win::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(file);
}

inline std::string ReadWholeFile(const WideString& path) {
    const win::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string text;
    char buffer[4096];
    DWORD got = 0;
    while (file && ReadFile(file.Get(), buffer, sizeof(buffer), &got, nullptr) && got > 0) {
        text.append(buffer, got);
    }
    return text;
}

class LogDirectory {
  public:
    LogDirectory() {
        static int s_count = 0;
#ifdef QRX_NATIVE
        const WideString root = OLESTR("/tmp");
#else
        WCHAR buffer[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, buffer);
        WideString root = buffer;
        root.pop_back();
#endif
        m_path =
            root + OLESTR("\\qrx_log_") + ToWideDecimal(GetCurrentProcessId()) + OLESTR("_") + ToWideDecimal(++s_count);
        CreateDirectoryW(m_path.c_str(), nullptr);
    }
    ~LogDirectory() {
        for (const auto& file : m_files) {
            DeleteFileW((m_path + file).c_str());
        }
        DeleteFileW((m_path + OLESTR("\\QRX_MKVMuxer.log")).c_str());
        for (const auto& folder : m_folders) {
            RemoveDirectoryW((m_path + folder).c_str());
        }
        RemoveDirectoryW(m_path.c_str());
    }
    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;

    [[nodiscard]] const WideString& Path() const {
        return m_path;
    }

    // Deepest folder first; each begins with a separator.
    void AlsoRemove(std::vector<WideString> files, std::vector<WideString> folders) {
        m_files.insert(m_files.end(), files.begin(), files.end());
        m_folders.insert(m_folders.end(), folders.begin(), folders.end());
    }

  private:
    WideString m_path;
    std::vector<WideString> m_files;
    std::vector<WideString> m_folders;
};

// The string resource of this program that the Windows build gets from log_test.rc, as an insertable identifier.
inline const WCHAR* StringResource(UINT id, [[maybe_unused]] const WCHAR* text) {
#ifdef QRX_NATIVE
    native::SetStringResource(id, text);
#endif
    return reinterpret_cast<const WCHAR*>(static_cast<ULONG_PTR>(id));
}

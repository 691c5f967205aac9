// Files that are there, opened so that nobody else is kept from them.
//
// Threads: any. Errors: none is open; GetLastError tells why.
#pragma once

#include <string>

#include "win/handle.h"
#include "win/platform.h"

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
inline constexpr size_t kChunkBytes = size_t{1024} * 1024; // of one call

[[nodiscard]] inline win::FileHandle OpenExisting(const std::wstring& path, DWORD access) {
    return win::FileHandle(
        CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The operating system takes a name with a zero inside for a shorter one.
[[nodiscard]] inline bool IsFileName(const std::wstring& path) {
    return !path.empty() && path.find(L'\0') == std::wstring::npos;
}

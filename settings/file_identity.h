// FileIdentity: what a file keeps when its content is replaced.
//
// Threads: any. Errors: nothing or false; std::bad_alloc.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "win/platform.h"

struct FileIdentity {
    std::wstring path; // the file's own, without a link on it
    DWORD attributes = 0;
    std::vector<BYTE> rights; // a security descriptor; empty where the file system has none
};

// Nothing when the file is missing, or does not say all of it.
[[nodiscard]] std::optional<FileIdentity> IdentityOf(const std::wstring& path);

// The file is open for changing its rights.
[[nodiscard]] bool GiveRights(HANDLE file, const FileIdentity& identity);

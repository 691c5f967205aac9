// Whole files, read.
//
// Units: bytes. Threads: any. Errors: a status.
#pragma once

#include <string>

enum class ReadStatus {
    Read,
    Missing,    // no such file
    Unreadable, // there is one, but it is too long, or somebody keeps it from us
};

// At most limit bytes are read.
[[nodiscard]] ReadStatus ReadFileBytes(const std::wstring& path, size_t limit, std::string& bytes);

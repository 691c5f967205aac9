// Whole files, read and replaced.
//
// Units: bytes. Threads: any. Errors: false or a status; a file that cannot be replaced stays as it was.
#pragma once

#include <string>

enum class ReadStatus {
    Read,
    Missing,    // no such file
    Unreadable, // there is one, but it is too long, or somebody keeps it from us
};

// At most limit bytes are read.
[[nodiscard]] ReadStatus ReadFileBytes(const std::wstring& path, std::size_t limit, std::string& bytes);

// Whether ReplaceFileBytes may succeed: the file can be written, or its folder is there.
[[nodiscard]] bool IsReplaceable(const std::wstring& path);

// Writes a file beside it first, and moves that over it when it is complete.
[[nodiscard]] bool ReplaceFileBytes(const std::wstring& path, const std::string& bytes);

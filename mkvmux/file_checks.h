// FileChecks: what can be said of a run's files by their names alone, before anything is opened.
//
// Errors: Failure.
#pragma once

#include <string>
#include <string_view>

#include "win/platform.h"

namespace mkvmux {

// Is there, is no directory and holds something.
void CheckInput(const std::wstring& path);

// A file can stand there: no directory does, the folder is there and the name is not too long. An empty path is none.
void CheckPlace(const std::wstring& path);

// Why a file could not be opened; the system calls a name that is too long "not found".
[[nodiscard]] std::string DescribeFileError(std::wstring_view path, HRESULT hr);

} // namespace mkvmux

// The language table as lists of names for users to choose from.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string>
#include <vector>

#include "win/platform.h"

// Every name, in the table's order; the thread's ANSI code page tells how to read the table.
[[nodiscard]] std::vector<std::wstring> LanguageNames();
// The position of the name in that list; records::kNoLanguageIndex for one that is not there.
[[nodiscard]] UINT32 LanguagePosition(const std::wstring& name);

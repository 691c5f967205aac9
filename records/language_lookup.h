// The language table for UTF-16 text, under whatever ANSI code page the calling thread has.
//
// Threads: any; the code page is the calling one's. Errors: std::bad_alloc.
#pragma once

#include <string>

#include "win/wide_string.h"

namespace records {

// The name of that row as it reads in the code page, right or not: lists show it so.
[[nodiscard]] WideString ShownLanguageName(UINT32 index);

// The first row whose name is what the code page makes of the text. A code page of two bytes may have no text for the
// bytes of a name; then the row whose shown name the text is. kNoLanguageIndex for any other text, and for none (null).
[[nodiscard]] UINT32 FindLanguage(const WCHAR* text);

// The code of the row that the text finds, as the table has it; empty for a language that is not found.
[[nodiscard]] std::string LanguageCodeOf(const WCHAR* text);

} // namespace records

// The codes that standards want of a language, where the language table has what readers of old files have always seen.
//
// Threads: any; the code page is the calling one's. Errors: std::bad_alloc.
#pragma once

#include <string>

#include "win/platform.h"

namespace records {

struct LanguageCodes {
    std::string bibliographic; // ISO 639-2, exactly one: "chi"
    std::string tag;           // BCP 47, as short as there is one: "zh"
};

// Of the row that the text finds; "und" for a language that is not found.
[[nodiscard]] LanguageCodes LanguageCodesOf(const WCHAR* text);

} // namespace records

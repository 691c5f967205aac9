// The languages of ISO 639-2 by their English names, one row a name, for the writer and for lists that users choose
// from.
//
// Units: narrow strings in code page 1252. Owner: nobody, the rows are constants of the module.
// Threads: any. Errors: none; an unknown name, no name (null) or an index past the end is "not found".
#pragma once

#include <span>

#include "win/platform.h"

namespace records {

// The answer for a name that is not in the table.
inline constexpr UINT32 kNoLanguageIndex = 0xFFFFFFFF;

struct LanguageRow {
    const char* name;         // the key of every lookup
    const char* englishNames; // all of them, joined with "; "
    const char* frenchNames;
    const char* code;          // "eng"; with two codes both, the bibliographic one first: "chi/zho"
    const char* twoLetterCode; // ISO 639-1, empty when there is none
};

// Alphabetical by name, without regard to case.
[[nodiscard]] std::span<const LanguageRow> LanguageRows() noexcept;

} // namespace records

// Names are compared byte by byte, and the first equal row wins.
// The code as the table has it, both halves of a pair included; the empty string when no row has the name.
[[nodiscard]] const char* languageCodeByName(const char* name) noexcept;
[[nodiscard]] UINT32 languageIndexByName(const char* name) noexcept;
// Null for an index past the end.
[[nodiscard]] const char* languageNameByIndex(UINT32 index) noexcept;
[[nodiscard]] UINT32 languageCount() noexcept;

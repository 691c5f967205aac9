// LanguageSpelling: how a language of the list has to be spelt so that the muxer finds it.
//
// The muxer converts a row's language to the ANSI code page of the thread that starts the run, and compares the bytes
// with its list, which is text in code page 1252. Under another code page a name with an accent has to be given as the
// characters that stand for the same bytes there: "Volap\u044ck" for "Volapük" under 1251.
//
// Threads: the answers hold for threads of the same locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "win/platform.h"

namespace mkvmux {

// Of the names in the list.
inline constexpr UINT kListCodePage = 1252;

// For a name as FindLanguage answers it: that language as the muxer finds it, if need be by another name of the same
// code. Nothing when no text gives the bytes of any of its names.
[[nodiscard]] std::optional<std::wstring> SpellingForMuxer(std::wstring_view name);

// The code that the muxer writes for such a spelling; empty when it finds none.
[[nodiscard]] std::string CodeWrittenFor(std::wstring_view spelling);

// From now on the names of this thread have the code page of the list: every one of them can be spelt.
void UseCodePageOfTheList();

} // namespace mkvmux

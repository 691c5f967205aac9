// LanguageSpelling: how a language of the list has to be spelt so that the muxer finds it.
//
// The list is text in code page 1252, and the muxer looks a row's language up as the bytes, or the look, that it has in
// the ANSI code page of the thread that starts the run. Under another code page a name with an accent has to be given
// as the characters that the same bytes show there: "Volap\u044ck" for "Volapük" under 1251.
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

// For a name of the list: that language as the muxer finds it. Nothing for other names, and for one that the code page
// shows like a name of another language.
[[nodiscard]] std::optional<std::wstring> SpellingForMuxer(std::wstring_view name);

// The code that the muxer writes for such a spelling; empty when it finds none.
[[nodiscard]] std::string CodeWrittenFor(std::wstring_view spelling);

} // namespace mkvmux

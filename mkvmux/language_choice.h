// LanguageChoice: finds the language that a user means in the list of ISO 639-2.
//
// Names are what users read and write, in any code page of the system; LanguageSpelling has the muxer's form of them.
// Threads: any. Errors: an unknown language is no answer; NearestLanguages helps the user on.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mkvmux {

// As the list names what nobody said.
inline constexpr const wchar_t* kUndeterminedLanguage = L"Undetermined";

// The name as the list spells it, for that name in any case, or for a code of two or three letters ("de", "ger").
[[nodiscard]] std::optional<std::wstring> FindLanguage(std::wstring_view text);

// At most three names that the user may have meant, the likeliest first.
[[nodiscard]] std::vector<std::wstring> NearestLanguages(std::wstring_view text);

// "ger      German", a line each, as UTF-8.
[[nodiscard]] std::string ListLanguages();

} // namespace mkvmux

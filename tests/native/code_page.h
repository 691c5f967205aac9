// The two code pages of the lane: Windows-1252, the ANSI code page of the system and of every thread, and UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "win/platform.h"

namespace native {

constexpr UINT kWindows1252 = 1252;

// 1252 for CP_ACP and CP_THREAD_ACP, else the code page itself.
UINT ResolveCodePage(UINT codePage);

// The byte of a UTF-16 unit in Windows-1252, if it has one; and the other way round, where every byte has a unit.
std::optional<char> ToWindows1252(WCHAR unit);
WCHAR FromWindows1252(char byte);

// The next character of the text, which is shortened by it. `valid` is cleared for a lone surrogate or for bytes
// that are no UTF-8; the character is then U+FFFD.
char32_t TakeUtf16(std::basic_string_view<WCHAR>& text, bool& valid);
char32_t TakeUtf8(std::string_view& text, bool& valid);

void AppendUtf8(std::string& text, char32_t character);
void AppendUtf16(std::basic_string<WCHAR>& text, char32_t character);

} // namespace native

// The texts that stand for values in a settings document, and back.
//
// Numbers are written so that the same number is read: doubles with as few digits as that takes. The type r8 has no
// text for what is not finite; INF, -INF and NaN are used, as XML Schema writes them.
// Threads: any. Errors: nothing, for a text that is no such value or one out of range.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

[[nodiscard]] std::wstring DoubleText(double value);
// In one line, padded with '='.
[[nodiscard]] std::wstring Base64Text(std::span<const unsigned char> bytes);

// White space around a number, and a '+' in front of it, are allowed.
[[nodiscard]] std::optional<std::int32_t> ParseInt32(std::wstring_view text);
[[nodiscard]] std::optional<std::int64_t> ParseInt64(std::wstring_view text);
[[nodiscard]] std::optional<double> ParseDouble(std::wstring_view text);

// How many bytes a base64 text stands for; white space is allowed anywhere, anything else outside is not.
[[nodiscard]] std::optional<size_t> Base64Size(std::wstring_view text);

[[nodiscard]] bool IsXmlSpace(wchar_t c);
// Whether a document can hold the text: no control characters but tab and line ends, no half of a surrogate pair.
[[nodiscard]] bool IsXmlText(std::wstring_view text);

// The text of a document, piece by piece: tags, comments, instructions and sections of character data.
//
// It is not parsed: whether it is well-formed, a parser says. Units: characters. Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string_view>
#include <vector>

// The length of the piece that begins the text, which begins with '<'.
[[nodiscard]] size_t MarkupLength(std::wstring_view text);

[[nodiscard]] bool IsCharacterData(std::wstring_view markup);
// Of an element that has an end tag.
[[nodiscard]] bool IsOpeningTag(std::wstring_view markup);
[[nodiscard]] bool IsClosingTag(std::wstring_view markup);
// The names of a tag's attributes, one for each '=' that is not in quotes.
[[nodiscard]] std::vector<std::wstring_view> AttributeNames(std::wstring_view tag);

// What a document would cost a parser, found out before one sees it.
//
// Units: attributes and pieces of markup, which a tag, a comment, an instruction or a section of character data is one
// of. Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string>

// More than the shortest values that fill the longest file have.
inline constexpr size_t kMaxMarkup = size_t{256} * 1024;
// Of an element and all that it is within, besides those that a saver gives a value: parsers compare each with all
// others.
inline constexpr size_t kMaxAttributes = 256;

// False for a document with more of either, with a document type (no entity is ever looked up or expanded), or in an
// encoding that only a parser can tell markup in. Whether the rest is a document at all, a parser says.
[[nodiscard]] bool IsHarmless(const std::string& bytes);

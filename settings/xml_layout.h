// The layout of a settings file: one tag a line, no indentation, its declaration first.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

// The text of a well-formed document with a line break between every two adjacent tags, and none added anywhere else.
// White space between tags is layout too, unless it is all that an element holds.
[[nodiscard]] std::wstring OneTagPerLine(std::wstring_view xml);

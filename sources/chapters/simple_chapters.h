// ParseSimpleChapters: chapters as OGM tools write them, two lines each:
//
//     CHAPTER01=00:00:00.000
//     CHAPTER01NAME=Introduction
//
// Units: UTF-8. Errors: TextError, std::bad_alloc.
#pragma once

#include <string_view>
#include <vector>

#include "sources/base/chapters.h"

namespace chapters {

[[nodiscard]] bool LooksLikeSimpleChapters(std::string_view text);
// Titles without a language; empty lines count for nothing.
[[nodiscard]] std::vector<source::Chapter> ParseSimpleChapters(std::string_view text);

} // namespace chapters

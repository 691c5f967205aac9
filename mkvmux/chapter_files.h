// Reads the files that --chapters and --global-tags name.
//
// Errors: Failure, one line with the file and the line in it. What is left out is a warning.
#pragma once

#include <vector>

#include "mkvmux/chapter_options.h"
#include "mkvmux/console.h"
#include "sources/base/chapters.h"

namespace mkvmux {

// Every title has a language.
[[nodiscard]] std::vector<source::Chapter> ReadChapterFile(const ChapterOptions& options, Console& console);
[[nodiscard]] std::vector<source::Tag> ReadTagFile(const std::wstring& path, Console& console);

} // namespace mkvmux

// ReadChapterXml: chapters in the XML that Matroska tools write and read.
//
// Units: as source::Chapter. Errors: TextError, std::bad_alloc.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sources/base/chapters.h"

namespace chapters {

struct ChapterFile {
    std::vector<source::Chapter> chapters;
    std::vector<std::string> leftOut; // what it says beside, such as "<ChapterTrack>", each once
};

// Of several editions the default one, or the first.
[[nodiscard]] ChapterFile ReadChapterXml(std::string_view text);

} // namespace chapters

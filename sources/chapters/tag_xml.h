// ReadTagXml: tags in the XML that Matroska tools write and read.
//
// Units: as source::Tag. Errors: TextError, std::bad_alloc.
#pragma once

#include <string_view>
#include <vector>

#include "sources/base/chapters.h"

namespace chapters {

struct TagFile {
    std::vector<source::Tag> tags;
    size_t foreign = 0; // of a track, an edition, a chapter or an attachment of the file that they came from
    size_t binary = 0;  // whose value is no text
};

// Those that are counted are left out.
[[nodiscard]] TagFile ReadTagXml(std::string_view text);

} // namespace chapters

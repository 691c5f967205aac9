// What a Matroska file says of its whole: chapters, and the tags that speak of no single track, chapter or attachment.
//
// Units: as source::Chapter and source::Tag; finer times are cut off. Errors: what is damaged, too deep or too much is
// left out. Memory: bounded by the number of records and the length of each text.
#pragma once

#include <vector>

#include "sources/base/chapters.h"
#include "sources/matroska/ebml_reader.h"

namespace matroska {

// Of several editions the default one, or the first.
[[nodiscard]] std::vector<source::Chapter> ReadChapters(const EbmlReader& reader, const Element& chapters);

// Behind those that are there.
void ReadGlobalTags(const EbmlReader& reader, const Element& element, std::vector<source::Tag>& tags);

} // namespace matroska

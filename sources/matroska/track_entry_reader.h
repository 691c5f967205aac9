// From a TrackEntry element to a Track.
#pragma once

#include "sources/matroska/matroska_file.h"

namespace matroska {

// Number 0 when the entry does not say. Children that are damaged are left out. The private data may have as many bytes
// as there is room for.
[[nodiscard]] Track ReadTrackEntry(const EbmlReader& reader, const Element& entry, UINT64 privateRoom);

} // namespace matroska

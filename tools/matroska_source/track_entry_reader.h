// From a TrackEntry element to a Track.
#pragma once

#include "tools/matroska_source/matroska_file.h"

namespace matroska {

// Number 0 when the entry does not say. Children that are damaged are left out.
[[nodiscard]] Track ReadTrackEntry(const EbmlReader& reader, const Element& entry);

} // namespace matroska

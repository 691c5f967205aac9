// Finds the way back into a damaged file.
#pragma once

#include "sources/matroska/ebml_reader.h"

namespace matroska {

// The position of the first believable cluster that begins there or later; the limit when there is none.
[[nodiscard]] UINT64 FindCluster(const EbmlReader& reader, UINT64 position, UINT64 limit);

} // namespace matroska

// From a Matroska track to the DirectShow media types that carry its codec, the usual one first.
#pragma once

#include <vector>

#include "dshow/media_type.h"
#include "sources/matroska/matroska_file.h"

namespace matroska {

// Each is written back by the muxer with the same codec identifier and codec private data, as far as its rules for the
// codec allow. None for a codec that no type carries, or whose private data is damaged.
[[nodiscard]] std::vector<CMediaType> MediaTypesOf(const Track& track);

// One kind of track each.
[[nodiscard]] std::vector<CMediaType> VideoTypesOf(const Track& track);
[[nodiscard]] std::vector<CMediaType> AudioTypesOf(const Track& track);
[[nodiscard]] std::vector<CMediaType> SubtitleTypesOf(const Track& track);

} // namespace matroska

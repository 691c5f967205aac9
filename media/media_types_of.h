// From a track to the media types that carry its codec, the usual one first.
#pragma once

#include <vector>

#include "dshow/media_type.h"
#include "media/track_facts.h"

namespace media {

// Each is written back by the muxer with the same codec identifier and codec private data, as far as its rules for the
// codec and the profile of the file allow. None for a codec that no type carries, or whose private data is damaged.
[[nodiscard]] std::vector<CMediaType> MediaTypesOf(const TrackFacts& track);

} // namespace media

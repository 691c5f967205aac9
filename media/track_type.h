// Which kind of track a media type makes, by its major type alone.
#pragma once

#include "win/platform.h"

namespace media {

// Track types as Matroska numbers them.
inline constexpr INT32 kNoTrackType = 0;
inline constexpr INT32 kTrackTypeVideo = 1;
inline constexpr INT32 kTrackTypeAudio = 2;
inline constexpr INT32 kTrackTypeSubtitle = 17;

// kNoTrackType for every other major type.
[[nodiscard]] INT32 FindTrackType(const GUID& majorType);

} // namespace media

// The tags that tell how much of each track is in the file, by the names that players and tools know them by.
#pragma once

#include <matroska/KaxTag.h>
#include <matroska/KaxTags.h>

#include "mkv/file_origin.h"
#include "mkv/track_statistics.h"

namespace mkv {

// A tag for one more track. Throws std::bad_alloc.
void AddStatisticsTag(libmatroska::KaxTags& tags, const CTrackStatistics::Track& track, const FileOrigin& origin);

} // namespace mkv

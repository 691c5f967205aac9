// The tags that an application gave, as elements. Those that follow each other and speak of the same thing share a Tag.
// Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <map>
#include <vector>

#include <matroska/KaxTags.h>

#include "records/tag.h"

namespace mkv {

using TrackUids = std::map<INT32, UINT64>; // by the number of the input

// Those of tracks that are not in the file are left out. WebM has no tags of tags.
void AddUserTags(libmatroska::KaxTags& element, const std::vector<records::Tag>& tags, const TrackUids& uids,
                 bool isWebM);

} // namespace mkv

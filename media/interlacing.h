// Fields of pictures: between Matroska's FlagInterlaced and FieldOrder, and dwInterlaceFlags of a format block.
//
// dwInterlaceFlags has no word for pictures of which nothing is said: most splitters leave it 0 for all of them. So 0
// says nothing here, and whoever knows that pictures are progressive says that they are to be shown as they are (weave
// alone), which nobody else minds. Fields in an irregular pattern have no order that is known.
#pragma once

#include "media/codec_description.h"
#include "media/track_facts.h"

namespace media {

// Of a track, for a format block.
[[nodiscard]] DWORD InterlaceFlagsOf(const VideoFacts& video);

// Of a format block, for a track.
void DescribeFields(DWORD interlaceFlags, VideoDescription& video);

} // namespace media

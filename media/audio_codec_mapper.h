// What an audio media type becomes in a track entry.
#pragma once

#include "media/codec_description.h"
#include "win/platform.h"

namespace media {

// An empty codec identifier for other major types, types without a row, and damaged format blocks.
[[nodiscard]] CodecDescription DescribeAudioCodec(const AM_MEDIA_TYPE& type);

} // namespace media

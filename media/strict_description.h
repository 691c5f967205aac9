// The strict way from a media type to a track: what the layout of the row reads, and then refined.
#pragma once

#include "media/codec_description.h"
#include "media/codec_table.h"

namespace media {

// Without a codec identifier when the codec cannot be written so.
[[nodiscard]] CodecDescription StrictDescriptionOf(const CodecRow& row, const AM_MEDIA_TYPE& type);

} // namespace media

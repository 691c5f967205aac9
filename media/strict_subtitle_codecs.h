// The codecs of text and subtitles that the strict description refines.
#pragma once

#include <string_view>

#include "media/strict_codec.h"

namespace media {

// Null for a codec that needs no refinement of its own.
[[nodiscard]] const StrictCodec* FindStrictSubtitleCodec(std::string_view codecId);

} // namespace media

// The codecs of pictures that the strict description refines.
#pragma once

#include <string_view>

#include "media/strict_codec.h"

namespace media {

// Null for a codec that needs no refinement of its own.
[[nodiscard]] const StrictCodec* FindStrictVideoCodec(std::string_view codecId);

} // namespace media

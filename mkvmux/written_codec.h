// The codec that a stream gets in the file, by the file's profile.
#pragma once

#include <string>

#include "media/codec_description.h"

namespace mkvmux {

// Empty for a type that cannot be written.
[[nodiscard]] inline std::string WrittenCodecId(const AM_MEDIA_TYPE& type, bool isStrict) {
    return isStrict ? media::StrictCodecIdOf(type) : media::CodecIdOf(type);
}

} // namespace mkvmux

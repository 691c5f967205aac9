// A media type in a few words: "video 'cvid', 160x120, 25 fps", "audio, wave tag 0x0001, 44100 Hz, 2 channels".
#pragma once

#include <string>

#include "win/platform.h"

namespace mkvmux {

[[nodiscard]] std::string DescribeMediaType(const AM_MEDIA_TYPE& type);

} // namespace mkvmux

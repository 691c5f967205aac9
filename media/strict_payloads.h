// What the samples of some codecs become in strict files.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "media/format_block.h"
#include "win/platform.h"

namespace media {

struct StrictPayload {
    // What is left of the sample. None when that needs more room than there is; the sample is as it was then.
    std::optional<std::span<BYTE>> (*inPlace)(const AM_MEDIA_TYPE& type, std::span<BYTE> sample);
    std::vector<BYTE> (*copy)(const AM_MEDIA_TYPE& type, ByteView sample);
};

// Null where samples stay as they are.
[[nodiscard]] const StrictPayload* FindStrictPayload(const AM_MEDIA_TYPE& type);

} // namespace media

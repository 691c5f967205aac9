// The Vorbis format block, and the codec private data from it.
#pragma once

#include <optional>
#include <vector>

#include "codecs/vorbis_headers.h"
#include "media/format_block.h"
#include "win/platform.h"

namespace media {

// The head of the Vorbis format block; the three header packets follow, back to back.
struct VorbisFormat {
    UINT32 channels;
    UINT32 samplesPerSec;
    UINT32 bitsPerSample;
    UINT32 headerSize[codecs::kVorbisHeaders];
};
static_assert(sizeof(VorbisFormat) == 24);

// No value when the block does not hold what its sizes claim.
[[nodiscard]] std::optional<std::vector<BYTE>> BuildVorbisPrivate(const FormatBlock& block, const VorbisFormat& format);

} // namespace media

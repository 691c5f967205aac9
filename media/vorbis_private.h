// The codec private data of Vorbis: the three header packets with Xiph lacing.
#pragma once

#include <optional>
#include <vector>

#include "media/format_block.h"
#include "win/platform.h"

namespace mkv {

// The head of the Vorbis format block; the three header packets follow, back to back.
struct VorbisFormat {
    UINT32 channels;
    UINT32 samplesPerSec;
    UINT32 bitsPerSample;
    UINT32 headerSize[3];
};
static_assert(sizeof(VorbisFormat) == 24);

// No value when the block does not hold what its sizes claim.
[[nodiscard]] std::optional<std::vector<BYTE>> BuildVorbisPrivate(const FormatBlock& block, const VorbisFormat& format);

} // namespace mkv

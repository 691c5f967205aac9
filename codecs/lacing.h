// Takes the frames of a Matroska block apart.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr uint8_t kXiphLacing = 2; // also how Vorbis keeps its headers

// The frames in order, as parts of the payload; none when the sizes contradict the payload. The lacing is the block's
// flag: 0 none, 2 Xiph, 4 fixed size, 6 EBML.
[[nodiscard]] std::optional<std::vector<ByteView>> TakeFramesApart(ByteView payload, uint8_t lacing);

} // namespace codecs

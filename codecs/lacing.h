// Takes the frames of a Matroska block apart.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "win/platform.h"

namespace matroska {

using Bytes = std::span<const BYTE>;

inline constexpr BYTE kXiphLacing = 2; // also how Vorbis keeps its headers

// The frames in order, as parts of the payload; none when the sizes contradict the payload. The lacing is the block's
// flag: 0 none, 2 Xiph, 4 fixed size, 6 EBML.
[[nodiscard]] std::optional<std::vector<Bytes>> TakeFramesApart(Bytes payload, BYTE lacing);

} // namespace matroska

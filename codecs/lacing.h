// Lacing: several frames in the payload of one Matroska block (RFC 9559, 10.3), or several packets in one piece of
// codec private data.
//
// Units: bytes. Owner: frames are views of the payload; what is built is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr uint8_t kXiphLacing = 2; // also how Vorbis keeps its headers

// The frames in order, as parts of the payload; none when the sizes contradict the payload. The lacing is the block's
// flag: 0 none, 2 Xiph, 4 fixed size, 6 EBML.
[[nodiscard]] std::optional<std::vector<ByteView>> TakeFramesApart(ByteView payload, uint8_t lacing);

// The payload that holds the frames in Xiph lacing: 1 to 256 of them.
[[nodiscard]] std::vector<uint8_t> LaceXiph(std::span<const ByteView> frames);

} // namespace codecs

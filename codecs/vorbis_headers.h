// The codec private data of Vorbis: its three header packets in Xiph lacing, taken apart and put together.
//
// Units: bytes. Owner: the packets are views of what holds them.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr size_t kVorbisHeaders = 3;
// Identification, comment, setup.
using VorbisHeaders = std::array<ByteView, kVorbisHeaders>;

[[nodiscard]] std::vector<uint8_t> LaceVorbisHeaders(const VorbisHeaders& headers);
// None when there are not three packets, or when their sizes contradict the data.
[[nodiscard]] std::optional<VorbisHeaders> TakeVorbisHeadersApart(ByteView codecPrivate);

} // namespace codecs

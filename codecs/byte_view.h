// Bytes that somebody else keeps: what all readers of this folder take. They know bytes and nothing of files, media
// types or the platform.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace codecs {

using ByteView = std::span<const uint8_t>;

} // namespace codecs

// The bounds that keep what an input costs in proportion to what it holds. Inputs come from strangers (SECURITY.md).
#pragma once

#include <cstddef>

#include "win/platform.h"

namespace source {

inline constexpr size_t kMiB = size_t{1024} * 1024;

// Larger packets are taken for damage, so that a flipped bit cannot ask for the whole memory. A picture of 7680x4320
// with 32 bits a pixel fits.
inline constexpr size_t kMaxPacketBytes = 128 * kMiB;
// The codec private data of all streams of an input together: it is held several times over by pins and muxer. Codecs
// need a few hundred KiB; a script that brings its fonts needs more.
inline constexpr size_t kMaxPrivateBytes = 16 * kMiB;
// 73 years in 100 ns: later times are damage. In nanoseconds they fit 64 bits, and so do sums of two.
inline constexpr REFERENCE_TIME kMaxTime = (INT64{1} << 61) / 100;

} // namespace source

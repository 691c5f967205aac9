// When a cluster has to end. Units: nanoseconds, bytes.
#pragma once

#include "win/platform.h"

namespace mkv {

inline constexpr UINT64 kTimecodeScaleNs = 1000000; // 1 ms, in the whole file
inline constexpr UINT64 kMaxClusterSpanMs = 32767;
inline constexpr UINT64 kMaxClusterPayloadBytes = UINT64{4} << 20;

// Whether a block that ends there, with this much payload together with the blocks before it, is too much for the
// cluster that started at clusterStartNs.
[[nodiscard]] bool ExceedsCluster(UINT64 endNs, UINT64 clusterStartNs, UINT64 payloadBytes);

// Whether a block of that time can be written into a cluster that starts there: a block's time is a signed 16-bit
// offset from its cluster's.
[[nodiscard]] bool FitsBlockOffset(UINT64 timeNs, UINT64 clusterStartNs);

// ---- Strict ----

inline constexpr INT64 kMaxStrictSpanMs = 5000;
inline constexpr INT64 kMaxLiveSpanMs = 1000;                     // a player that watches waits no longer for the next
inline constexpr UINT64 kMaxStrictClusterBytes = UINT64{5} << 20; // of its data
// So that what is remembered of each stays small; a hundred tracks have fewer in five seconds.
inline constexpr size_t kMaxStrictBlocks = 65536;

// Whether so much is too much for one cluster: from the start of its earliest block to that of its latest, and bytes
// and blocks together with the one that comes. A block alone never is.
[[nodiscard]] bool ExceedsStrictCluster(INT64 spanMs, UINT64 dataBytes, size_t blocks,
                                        INT64 maxSpanMs = kMaxStrictSpanMs);

} // namespace mkv

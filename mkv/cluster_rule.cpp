#include "mkv/cluster_rule.h"

#include <limits>

namespace mkv {

bool ExceedsCluster(UINT64 endNs, UINT64 clusterStartNs, UINT64 payloadBytes) {
    const UINT64 spanNs = endNs > clusterStartNs ? endNs - clusterStartNs : clusterStartNs - endNs;
    return spanNs / kTimecodeScaleNs >= kMaxClusterSpanMs || payloadBytes >= kMaxClusterPayloadBytes;
}

bool FitsBlockOffset(UINT64 timeNs, UINT64 clusterStartNs) {
    // As the offset is rendered: from the cluster's time in whole milliseconds, truncated towards zero.
    const UINT64 clusterTimeNs = clusterStartNs / kTimecodeScaleNs * kTimecodeScaleNs;
    const auto offset = (static_cast<INT64>(timeNs) - static_cast<INT64>(clusterTimeNs)) / INT64{kTimecodeScaleNs};
    return offset >= std::numeric_limits<INT16>::min() && offset <= std::numeric_limits<INT16>::max();
}

bool ExceedsStrictCluster(INT64 spanMs, UINT64 dataBytes, size_t blocks, INT64 maxSpanMs) {
    return blocks > 1 && (spanMs >= maxSpanMs || dataBytes > kMaxStrictClusterBytes || blocks > kMaxStrictBlocks);
}

} // namespace mkv

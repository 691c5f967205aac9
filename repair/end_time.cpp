#include "repair/end_time.h"

#include <algorithm>

#include "mkv/cluster_rule.h"
#include "repair/block_walk.h"

namespace repair {

void EndTime::Add(const matroska::Block& block, UINT64 defaultDurationNs) {
    const UINT64 startNs = static_cast<UINT64>(block.ticks) * mkv::kTimecodeScaleNs;
    const auto [last, isFirst] = m_startNs.try_emplace(block.track, startNs);
    UINT64 durationNs = defaultDurationNs;
    if (block.durationTicks) {
        durationNs = std::min<UINT64>(*block.durationTicks, kMaxTicks) * mkv::kTimecodeScaleNs;
    } else if (durationNs == 0 && startNs > last->second) {
        durationNs = startNs - last->second;
    }
    last->second = startNs;
    m_latestNs = std::max(m_latestNs, startNs + durationNs);
}

} // namespace repair

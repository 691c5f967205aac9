// The blocks of one cluster alone.
#pragma once

#include "sources/matroska/block_walker.h"

namespace repair {

// Three decades; a time beyond it comes from damage.
inline constexpr INT64 kMaxTicks = INT64{1} << 40;

// Calls visit(block) for those with a time that can be, until it answers false; false when the cluster is damaged as
// far as it was walked.
template <typename Visit>
bool WalkCluster(const matroska::EbmlReader& reader, const matroska::Element& cluster, Visit visit) {
    matroska::Element around = cluster; // what the walker takes for the Segment
    around.data = cluster.start;
    matroska::BlockWalker walker(reader, around);
    while (const auto block = walker.Next()) {
        const bool canBe = block->ticks >= 0 && block->ticks <= kMaxTicks;
        if (canBe && !visit(*block)) {
            break;
        }
    }
    return !walker.IsDamaged();
}

} // namespace repair

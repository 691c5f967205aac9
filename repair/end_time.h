// EndTime: when the last block ends of those that are added.
//
// Units: ticks of a millisecond, nanoseconds. Threads: one. Errors: std::bad_alloc.
#pragma once

#include <map>

#include "sources/matroska/block_walker.h"

namespace repair {

class EndTime {
  public:
    // The default duration of its track is 0 when the track does not say. Where the block does not say either, it lasts
    // as long as the one before it did.
    void Add(const matroska::Block& block, UINT64 defaultDurationNs);

    [[nodiscard]] UINT64 LatestNs() const { return m_latestNs; }

  private:
    std::map<UINT64, UINT64> m_startNs; // of the last block of each track
    UINT64 m_latestNs = 0;
};

} // namespace repair

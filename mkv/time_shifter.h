// CTimeShifter: from the times of packets to the times of blocks. A track whose first packet starts before 0 is
// shifted as a whole so that it starts at 0; a later packet that still starts before 0 moves to 0.
// Units: in: 100 ns (REFERENCE_TIME); out: nanoseconds. Times beyond what 63 bits of nanoseconds hold stay there.
// Owner: the cluster writer. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <vector>

#include "win/platform.h"

namespace mkv {

struct BlockTimes {
    UINT64 timeNs = 0;
    UINT64 durationNs = 0; // 0 when the packet stops before it starts
    UINT64 endNs = 0;
};

class CTimeShifter {
  public:
    // The first call for a track fixes that track's offset. Tracks are counted from 0 without gaps.
    [[nodiscard]] BlockTimes toBlockTimes(UINT32 track, REFERENCE_TIME start, REFERENCE_TIME stop);
    // 0 for a track that has not begun.
    [[nodiscard]] UINT64 offsetOf(UINT32 track) const;

  private:
    UINT64 fixOffset(UINT32 track, REFERENCE_TIME start);

    std::vector<std::optional<UINT64>> m_offsets; // by track, in units of 100 ns
};

} // namespace mkv

// CStrictTimes: from the times of packets to those of blocks, in whole milliseconds, rounded to the nearest. Where one
// starts before 0, all tracks are shifted alike, so that picture and sound stay together. The shift grows until the
// first cluster is written; a packet that still starts below 0 after that moves to 0 and keeps its length.
// Units: in: 100 ns (REFERENCE_TIME); out: ms of the packets, which the shift is still to be added to. Times beyond 146
// years stay there. Owner: the strict cluster writer. Threads: the writer's. Errors: none.
#pragma once

#include "win/platform.h"

namespace mkv {

struct PacketTimes {
    INT64 startMs = 0;
    INT64 endMs = 0; // not before the start
};

class CStrictTimes {
  public:
    [[nodiscard]] PacketTimes take(REFERENCE_TIME start, REFERENCE_TIME stop);
    // There are blocks in the file now.
    void fixShift() noexcept { m_isFixed = true; }

    [[nodiscard]] bool isFixed() const { return m_isFixed; }
    [[nodiscard]] INT64 shiftMs() const { return m_shiftMs; }
    // In the file; never below 0 for what take answered.
    [[nodiscard]] UINT64 fileMs(INT64 packetMs) const { return static_cast<UINT64>(packetMs + m_shiftMs); }

  private:
    INT64 m_shiftMs = 0;
    bool m_isFixed = false;
};

} // namespace mkv

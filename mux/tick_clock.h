// CTickClock: the system's 32-bit millisecond tick count, continued over its wrap every 49.7 days.
//
// Units: milliseconds. Owner: the interleaver. Threads: under the owner's lock.
#pragma once

#include "win/platform.h"

class CTickClock {
  public:
    explicit CTickClock(UINT32 tick = GetTickCount()) : m_lastTick(tick) {}

    [[nodiscard]] UINT64 Now() { return Extend(GetTickCount()); }

    // A tick below the last one means that the count has wrapped.
    UINT64 Extend(UINT32 tick) {
        if (tick < m_lastTick) {
            m_highPart += UINT64{1} << 32;
        }
        m_lastTick = tick;
        return m_highPart + tick;
    }

  private:
    UINT64 m_highPart = 0;
    UINT32 m_lastTick;
};

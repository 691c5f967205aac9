// CRefTime: a reference time as the published signatures pass it.
//
// Units: 100 ns, signed.
#pragma once

#include "win/platform.h"

inline constexpr REFERENCE_TIME kNsPerReferenceTime = 100;

class CRefTime {
  public:
    CRefTime() = default;
    CRefTime(REFERENCE_TIME time) : m_time(time) {}
    operator REFERENCE_TIME() const { return m_time; }

    REFERENCE_TIME GetUnits() const { return m_time; }
    LONG Millisecs() const { return static_cast<LONG>(m_time / kUnitsPerMillisecond); }

    static constexpr REFERENCE_TIME kUnitsPerMillisecond = 10000;

    REFERENCE_TIME m_time = 0;
};

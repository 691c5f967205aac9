// A recursive lock over CRITICAL_SECTION; meets the standard's Lockable requirements, so std::lock_guard and
// std::unique_lock work with it. An uncontended lock makes no kernel call.
#pragma once

#include "win/platform.h"

namespace win {

class CriticalSection {
  public:
    CriticalSection() { InitializeCriticalSection(&m_section); }
    ~CriticalSection() { DeleteCriticalSection(&m_section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void lock() { EnterCriticalSection(&m_section); }
    void unlock() { LeaveCriticalSection(&m_section); }
    bool try_lock() { return TryEnterCriticalSection(&m_section) != FALSE; }

    [[nodiscard]] CRITICAL_SECTION* Native() { return &m_section; }

  private:
    CRITICAL_SECTION m_section;
};

} // namespace win

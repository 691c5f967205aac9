// ConditionVariable: threads that sleep until what a critical section guards has changed.
//
// Units: milliseconds. Owner: whoever owns the lock. Threads: every call is made inside the one critical section,
// entered once. Waking when nobody sleeps makes no kernel call.
// Errors: none; a thread may wake for nothing, so the caller looks again.
#pragma once

#include "win/critical_section.h"
#include "win/platform.h"

namespace win {

class ConditionVariable {
  public:
    ConditionVariable() { InitializeConditionVariable(&m_variable); }
    ConditionVariable(const ConditionVariable&) = delete;
    ConditionVariable& operator=(const ConditionVariable&) = delete;

    // Leaves the lock while it sleeps. False when the time was up.
    bool Sleep(CriticalSection& lock, DWORD timeoutMs) QRX_REQUIRES(lock) {
        ++m_sleepers;
        const int depth = lock.m_holder.LeavingToSleep();
        const bool woken = SleepConditionVariableCS(&m_variable, &lock.m_section, timeoutMs) != FALSE;
        lock.m_holder.BackFromSleep(depth);
        --m_sleepers;
        return woken;
    }
    void WakeAll() {
        if (m_sleepers > 0) {
            WakeAllConditionVariable(&m_variable);
        }
    }
    [[nodiscard]] bool HasSleepers() const { return m_sleepers > 0; }

  private:
    CONDITION_VARIABLE m_variable;
    int m_sleepers = 0;
};

} // namespace win

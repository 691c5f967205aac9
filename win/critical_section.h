// CriticalSection: a recursive lock over CRITICAL_SECTION, and LockGuard, the one scope that holds it.
//
// Threads: any. An uncontended lock makes no kernel call. The lock knows its holder in debug and sanitizer builds, so
// that what the compile-time analysis cannot see is asserted (win/thread_annotations.h).
#pragma once

#include "win/lock_holder.h"
#include "win/platform.h"
#include "win/thread_annotations.h"

namespace win {

class QRX_CAPABILITY("lock") CriticalSection {
  public:
    CriticalSection() { InitializeCriticalSection(&m_section); }
    ~CriticalSection() { DeleteCriticalSection(&m_section); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    // Named as the standard's Lockable requirements have them.
    void lock() QRX_ACQUIRE() {
        m_holder.Entering();
        EnterCriticalSection(&m_section);
        m_holder.Entered();
    }
    void unlock() QRX_RELEASE() {
        m_holder.Leaving();
        LeaveCriticalSection(&m_section);
    }
    bool try_lock() QRX_TRY_ACQUIRE(true) {
        m_holder.Entering();
        const bool entered = TryEnterCriticalSection(&m_section) != FALSE;
        if (entered) {
            m_holder.Entered();
        }
        return entered;
    }

    // Asserted, and from here on believed by the analysis.
    void AssertHeld() const QRX_ASSERT_HELD() { m_holder.AssertThisThread(); }

  private:
    friend class ConditionVariable;
    friend class LockBan;

    CRITICAL_SECTION m_section;
    [[no_unique_address]] LockHolder m_holder;
};

// Holds the lock as long as it lives.
class QRX_SCOPED_CAPABILITY LockGuard {
  public:
    explicit LockGuard(CriticalSection& lock) QRX_ACQUIRE(lock) : m_lock(lock) { m_lock.lock(); }
    ~LockGuard() QRX_RELEASE() { m_lock.unlock(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

  private:
    CriticalSection& m_lock;
};

// While it lives, this thread must not take the lock: whoever holds that may be waiting for this thread to end.
// Asserted; one thread at a time.
class LockBan {
  public:
    explicit LockBan(CriticalSection& lock) : m_lock(lock) { m_lock.m_holder.BanThisThread(); }
    ~LockBan() { m_lock.m_holder.LiftBan(); }
    LockBan(const LockBan&) = delete;
    LockBan& operator=(const LockBan&) = delete;

  private:
    CriticalSection& m_lock;
};

} // namespace win

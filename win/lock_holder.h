// LockHolder: which thread holds a lock, and which must never take it. Debug and sanitizer builds keep it and end the
// program where a rule is broken; with NDEBUG it is nothing.
//
// Owner: the lock. Threads: any, as each function says.
#pragma once

#include <atomic>
#include <cassert>

#include "win/platform.h"

namespace win {

#ifdef NDEBUG

class LockHolder {
  public:
    void Entering() const {}
    void Entered() {}
    void Leaving() {}
    [[nodiscard]] int LeavingToSleep() { return 0; }
    void BackFromSleep(int /*depth*/) {}
    void AssertThisThread() const {}
    void BanThisThread() {}
    void LiftBan() {}
};

#else

class LockHolder {
  public:
    // Before the lock is asked for.
    void Entering() const { assert(m_banned != GetCurrentThreadId() && "this thread must never take the lock"); }
    // Inside the lock.
    void Entered() {
        m_thread = GetCurrentThreadId();
        ++m_depth;
    }
    void Leaving() {
        AssertThisThread();
        if (--m_depth == 0) {
            m_thread = 0;
        }
    }
    // A sleep gives the lock away whole; it was entered once, or the sleeper would keep it.
    [[nodiscard]] int LeavingToSleep() {
        AssertThisThread();
        assert(m_depth == 1 && "a thread sleeps on a lock that it entered more than once");
        m_thread = 0;
        m_depth = 0;
        return 1;
    }
    void BackFromSleep(int depth) {
        m_thread = GetCurrentThreadId();
        m_depth = depth;
    }

    void AssertThisThread() const { assert(m_thread == GetCurrentThreadId() && "the lock is not held"); }

    void BanThisThread() { m_banned = GetCurrentThreadId(); }
    void LiftBan() { m_banned = 0; }

  private:
    std::atomic<DWORD> m_thread{0}; // 0: nobody
    std::atomic<DWORD> m_banned{0}; // 0: nobody
    int m_depth = 0;                // of the holder
};

#endif

} // namespace win

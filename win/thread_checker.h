// ThreadChecker: remembers the one thread that some methods and members belong to, such as a worker's.
//
// To the compile-time analysis it is a thing to be held: methods for that thread alone say QRX_REQUIRES of it, members
// QRX_GUARDED_BY. Debug and sanitizer builds also assert it; with NDEBUG it is nothing.
// Owner: whoever owns the thread. Threads: one at a time is inside; the assertion from any.
#pragma once

#include <atomic>
#include <cassert>

#include "win/platform.h"
#include "win/thread_annotations.h"

namespace win {

class QRX_CAPABILITY("thread") ThreadChecker {
  public:
    ThreadChecker() = default;
    ThreadChecker(const ThreadChecker&) = delete;
    ThreadChecker& operator=(const ThreadChecker&) = delete;

#ifdef NDEBUG
    void Enter() QRX_ACQUIRE() {}
    void Leave() QRX_RELEASE() {}
    void AssertHere() const QRX_ASSERT_HELD() {}
#else
    // The calling thread is the one, until it leaves.
    void Enter() QRX_ACQUIRE() {
        assert(m_thread == 0 && "another thread is inside already");
        m_thread = GetCurrentThreadId();
    }
    void Leave() QRX_RELEASE() {
        AssertHere();
        m_thread = 0;
    }
    // Asserted, and from here on believed by the analysis.
    void AssertHere() const QRX_ASSERT_HELD() {
        assert(m_thread == GetCurrentThreadId() && "on another's thread");
    }

  private:
    std::atomic<DWORD> m_thread{0}; // 0: nobody is inside
#endif
};

// The stay of the thread that it is made on.
class QRX_SCOPED_CAPABILITY ThreadScope {
  public:
    explicit ThreadScope(ThreadChecker& checker) QRX_ACQUIRE(checker) : m_checker(checker) { m_checker.Enter(); }
    ~ThreadScope() QRX_RELEASE() { m_checker.Leave(); }
    ThreadScope(const ThreadScope&) = delete;
    ThreadScope& operator=(const ThreadScope&) = delete;

  private:
    ThreadChecker& m_checker;
};

} // namespace win

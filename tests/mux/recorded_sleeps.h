// RecordedSleeps: for how long a thread asked to sleep on condition variables, each time it did.
//
// The recorder stands in for the system's function in the whole test program and then calls it.
// Owner: the test. Threads: OfThisThread on the thread that is watched, the rest on any.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "win/platform.h"

class RecordedSleeps {
  public:
    // While it lives, this thread's sleeps are recorded.
    class OfThisThread {
      public:
        explicit OfThisThread(RecordedSleeps& sleeps);
        ~OfThisThread();
        OfThisThread(const OfThisThread&) = delete;
        OfThisThread& operator=(const OfThisThread&) = delete;
    };

    void Add(DWORD timeoutMs);
    // False when the time is over.
    [[nodiscard]] bool WaitFor(size_t count, std::chrono::milliseconds timeout) const;
    [[nodiscard]] std::vector<DWORD> TimeoutsMs() const;

  private:
    mutable std::mutex m_lock; // guards m_timeoutsMs
    mutable std::condition_variable m_more;
    std::vector<DWORD> m_timeoutsMs;
};

// HangGuard: ends the program when it lives too long, so that a run that hangs is a failure with a name.
//
// Owner: a scope. Threads: one of its own. Errors: aborts.
#pragma once

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

#include "tests/support/system_code.h"
#include "tests/support/watchdog.h"

namespace faults {

class HangGuard {
  public:
    explicit HangGuard(const std::string& what) : m_thread([this, what] { Watch(what); }) {}
    ~HangGuard() {
        {
            const std::lock_guard guard(m_lock);
            m_isOver = true;
        }
        m_over.notify_all();
        m_thread.join();
    }
    HangGuard(const HangGuard&) = delete;
    HangGuard& operator=(const HangGuard&) = delete;

  private:
    void Watch(const std::string& what) {
        const test_support::SystemCode notTheProduct;
        std::unique_lock guard(m_lock);
        if (!m_over.wait_for(guard, 2 * test_support::kWatchdog, [this] { return m_isOver; })) {
            std::fprintf(stderr, "error: it hangs: %s\n", what.c_str());
            std::abort();
        }
    }

    std::mutex m_lock;
    std::condition_variable m_over;
    bool m_isOver = false;
    std::thread m_thread; // the last: it uses the others
};

} // namespace faults

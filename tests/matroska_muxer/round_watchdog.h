// RoundWatchdog: ends the program when a round takes longer than it may: a hang is then told, and not waited for.
//
// Owner: the test. Threads: Next on one; it has one of its own.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>

class RoundWatchdog {
  public:
    explicit RoundWatchdog(std::chrono::milliseconds limit) : m_limit(limit) {}
    ~RoundWatchdog() {
        {
            const std::lock_guard lock(m_lock);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    RoundWatchdog(const RoundWatchdog&) = delete;
    RoundWatchdog& operator=(const RoundWatchdog&) = delete;

    // A round is over, and the next begins.
    void Next() {
        {
            const std::lock_guard lock(m_lock);
            const auto now = std::chrono::steady_clock::now();
            m_longest = std::max(m_longest, now - m_begun);
            m_begun = now;
            ++m_round;
        }
        m_changed.notify_all();
    }
    [[nodiscard]] std::chrono::milliseconds Longest() {
        const std::lock_guard lock(m_lock);
        return std::chrono::duration_cast<std::chrono::milliseconds>(m_longest);
    }

  private:
    void Watch() {
        std::unique_lock lock(m_lock);
        while (!m_isOver) {
            const int round = m_round;
            if (!m_changed.wait_for(lock, m_limit, [&] { return m_isOver || m_round != round; })) {
                std::fprintf(stderr, "round %d has not ended in %lld ms\n", round,
                             static_cast<long long>(m_limit.count()));
                std::abort();
            }
        }
    }

    const std::chrono::milliseconds m_limit;
    std::mutex m_lock; // guards all below
    std::condition_variable m_changed;
    bool m_isOver = false;
    int m_round = 0;
    std::chrono::steady_clock::time_point m_begun = std::chrono::steady_clock::now();
    std::chrono::steady_clock::duration m_longest{};
    std::thread m_thread{[this] { Watch(); }};
};

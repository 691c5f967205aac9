// CManualResetEvent: an event that stays as it was set until it is reset, kept as a flag instead of a kernel object.
//
// Owner: the interleaver and its streams. Errors: none.
// Threads: Set and Reset under the interleaver's lock, where whoever sets it also wakes those who sleep for it;
// IsSet from any thread, so that a wait whose condition already holds costs one read.
#pragma once

#include <atomic>

class CManualResetEvent {
  public:
    explicit CManualResetEvent(bool set) : m_set(set) {}

    void Set() { m_set.store(true, std::memory_order_release); }
    void Reset() { m_set.store(false, std::memory_order_release); }
    [[nodiscard]] bool IsSet() const { return m_set.load(std::memory_order_acquire); }

  private:
    std::atomic<bool> m_set;
};

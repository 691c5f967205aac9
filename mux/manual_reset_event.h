// CManualResetEvent: an event that stays as it was set until it is reset, kept as a flag instead of a kernel object.
//
// Owner: the interleaver. Errors: none.
// Threads: any; whoever sets it also wakes those who sleep for it, or announces what it stands for in another way.
// Sequentially consistent, so that it may be part of an announcement that nobody misses.
#pragma once

#include <atomic>

class CManualResetEvent {
  public:
    explicit CManualResetEvent(bool set) : m_set(set) {}

    void Set() { m_set.store(true); }
    void Reset() { m_set.store(false); }
    [[nodiscard]] bool IsSet() const { return m_set.load(); }

  private:
    std::atomic<bool> m_set;
};

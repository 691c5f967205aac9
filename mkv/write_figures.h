// CWriteFigures: how much went into an output and how long that took, for whoever asks while it goes on.
//
// Units: bytes, 100 ns. Owner: the output. Threads: reset, begin and end one at a time, get on any, without a lock.
#pragma once

#include <atomic>
#include <optional>

#include "win/steady_time.h"

namespace mkv {

class CWriteFigures {
  public:
    struct Figures {
        UINT64 bytes = 0;  // that arrived
        UINT64 writes = 0; // one that has not returned yet counts as well, and so does its time
        INT64 time = 0;
        INT64 longest = 0;
    };
    using Clock = INT64 (*)();

    explicit CWriteFigures(Clock clock = win::SteadyTime) : m_clock(clock) {}
    CWriteFigures(const CWriteFigures&) = delete;
    CWriteFigures& operator=(const CWriteFigures&) = delete;

    void reset();
    void begin();
    // How long it took.
    INT64 end(UINT64 bytes);

    [[nodiscard]] Figures get() const;

  private:
    [[nodiscard]] std::optional<Figures> tryToGet() const;

    const Clock m_clock;
    std::atomic<UINT64> m_changes{0}; // odd while the others change
    std::atomic<UINT64> m_bytes{0};
    std::atomic<UINT64> m_writes{0}; // that were begun
    std::atomic<INT64> m_time{0};
    std::atomic<INT64> m_longest{0};
    std::atomic<INT64> m_begin{0};
    std::atomic<bool> m_isWriting{false};
};

} // namespace mkv

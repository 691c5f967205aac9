// HeldStream: a null stream that can keep the muxer's worker inside a write, so that it is known where it is.
//
// Owner: the measurement. Threads: the worker writes, the measurement holds and lets go.
// The held worker spins: it makes no system call that could be mistaken for the muxer's.
#pragma once

#include <atomic>

#include "bench/null_stream.h"

namespace bench {

class HeldStream final : public NullStream {
  public:
    // The next write is kept; one that is being kept goes on.
    void HoldNextWrite() { m_state = State::Armed; }
    // Sleeps until it is; std::runtime_error when it does not come.
    void WaitUntilHeld() const;
    void LetGo() { m_state = State::Open; }

  private:
    enum class State { Open, Armed, Held };

    void OnWrite() override;

    std::atomic<State> m_state{State::Open};
};

} // namespace bench

#include "bench/held_stream.h"

#include <stdexcept>

#include "bench/stopwatch.h"
#include "bench/uncounted_section.h"

namespace bench {

void HeldStream::OnWrite() {
    State armed = State::Armed;
    if (!m_state.compare_exchange_strong(armed, State::Held)) {
        return;
    }
    while (m_state == State::Held) {
        YieldProcessor();
    }
}

void HeldStream::WaitUntilHeld() const {
    constexpr double kLimitSeconds = 20.0;
    const UncountedSection uncounted;
    const Stopwatch watch;
    while (m_state != State::Held) {
        if (watch.Seconds() > kLimitSeconds) {
            throw std::runtime_error("the muxer does not write a cluster that is due");
        }
        Sleep(1);
    }
}

} // namespace bench

#include "mux/stream_gate.h"

#include <mutex>

void StreamGate::Open(CMuxInterStream* stream) {
    const std::lock_guard lock(m_lock);
    m_stream = stream;
}

void StreamGate::Close() {
    const std::lock_guard lock(m_lock);
    m_stream = nullptr;
    while (m_inside > 0) {
        m_left.Sleep(m_lock, INFINITE);
    }
}

CMuxInterStream* StreamGate::Stream() const {
    const std::lock_guard lock(m_lock);
    return m_stream;
}

CMuxInterStream* StreamGate::Enter() {
    const std::lock_guard lock(m_lock);
    if (m_stream != nullptr) {
        ++m_inside;
    }
    return m_stream;
}

void StreamGate::Leave() {
    const std::lock_guard lock(m_lock);
    if (--m_inside == 0) {
        m_left.WakeAll();
    }
}

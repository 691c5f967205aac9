#include "mux/stream_gate.h"

void StreamGate::Open(CMuxInterStream* stream) {
    const win::LockGuard lock(m_lock);
    m_stream = stream;
}

void StreamGate::Close() {
    const win::LockGuard lock(m_lock);
    m_stream = nullptr;
    while (m_inside > 0) {
        m_left.Sleep(m_lock, INFINITE);
    }
}

CMuxInterStream* StreamGate::Stream() const {
    const win::LockGuard lock(m_lock);
    return m_stream;
}

CMuxInterStream* StreamGate::Enter() {
    const win::LockGuard lock(m_lock);
    if (m_stream != nullptr) {
        ++m_inside;
    }
    return m_stream;
}

void StreamGate::Leave() {
    const win::LockGuard lock(m_lock);
    if (--m_inside == 0) {
        m_left.WakeAll();
    }
}

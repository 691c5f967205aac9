#include "mux/stream_gate.h"

void CStreamGate::Open(CMuxInterStream* stream) {
    const win::LockGuard lock(m_lock);
    m_stream = stream;
}

void CStreamGate::Close() {
    const win::LockGuard lock(m_lock);
    m_stream = nullptr;
    while (m_inside > 0) {
        m_left.Sleep(m_lock, INFINITE);
    }
}

CMuxInterStream* CStreamGate::Stream() const {
    const win::LockGuard lock(m_lock);
    return m_stream;
}

CMuxInterStream* CStreamGate::Enter() {
    const win::LockGuard lock(m_lock);
    if (m_stream != nullptr) {
        ++m_inside;
    }
    return m_stream;
}

void CStreamGate::Leave() {
    const win::LockGuard lock(m_lock);
    if (--m_inside == 0) {
        m_left.WakeAll();
    }
}

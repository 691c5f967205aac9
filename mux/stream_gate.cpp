#include "mux/stream_gate.h"

void CStreamGate::Open(CMuxInterStream* stream) {
    m_stream.store(stream);
}

void CStreamGate::Close() {
    m_stream.store(nullptr);
    const win::LockGuard lock(m_lock);
    m_closing.store(true);
    while (m_inside.load() > 0) {
        m_left.Sleep(m_lock, INFINITE);
    }
    m_closing.store(false);
}

CMuxInterStream* CStreamGate::Enter() {
    ++m_inside; // before the look, so that Close either waits for this thread or has hidden the stream from it
    CMuxInterStream* const stream = m_stream.load();
    if (stream == nullptr) {
        Leave();
    }
    return stream;
}

void CStreamGate::Leave() {
    if (--m_inside == 0 && m_closing.load()) {
        const win::LockGuard lock(m_lock);
        m_left.WakeAll();
    }
}

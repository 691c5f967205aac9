#include "matroska_muxer/next_output.h"

#include <utility>

MuxNextOutputRule CNextOutput::Rule() const {
    const win::LockGuard lock(m_lock);
    return m_rule;
}

HRESULT CNextOutput::SetRule(const MuxNextOutputRule& rule) {
    const bool isKnown = rule.times == MuxOutputTimes_FromZero || rule.times == MuxOutputTimes_RunOn;
    if (!isKnown || rule.notBefore < 0 || rule.minDuration < 0) {
        return E_INVALIDARG;
    }
    const win::LockGuard lock(m_lock);
    m_rule = rule;
    m_rule.size = sizeof(m_rule);
    return S_OK;
}

// Who lets a stream go may run code of the application's: without the lock.
HRESULT CNextOutput::Want(IUnknown* output) {
    win::ComPtr<IStream> stream;
    if (output != nullptr && (FAILED(output->QueryInterface(IID_IStream, stream.PutVoid())) || !stream)) {
        return E_NOINTERFACE;
    }
    return Exchange(stream);
}

HRESULT CNextOutput::Exchange(win::ComPtr<IStream>& stream) {
    const win::LockGuard lock(m_lock);
    if (!m_isFileOpen) {
        return VFW_E_WRONG_STATE;
    }
    std::swap(m_request.stream, stream);
    m_request.rule = m_rule;
    m_isWanted.store(static_cast<bool>(m_request.stream), std::memory_order_release);
    return S_OK;
}

win::ComPtr<IStream> CNextOutput::Wanted() const {
    const win::LockGuard lock(m_lock);
    return m_request.stream;
}

void CNextOutput::OpenFile() {
    const win::LockGuard lock(m_lock);
    m_isFileOpen = true;
}

win::ComPtr<IStream> CNextOutput::CloseFile() {
    const win::LockGuard lock(m_lock);
    m_isFileOpen = false;
    m_isWanted.store(false, std::memory_order_release);
    return std::exchange(m_request.stream, {});
}

std::optional<MuxNextOutputRule> CNextOutput::WantedRule() const {
    const win::LockGuard lock(m_lock);
    return m_request.stream ? std::optional(m_request.rule) : std::nullopt;
}

CNextOutput::Request CNextOutput::Take() {
    const win::LockGuard lock(m_lock);
    m_isWanted.store(false, std::memory_order_release);
    return std::exchange(m_request, {});
}

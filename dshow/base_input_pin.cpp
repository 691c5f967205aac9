#include "dshow/base_input_pin.h"

#include "dshow/com_guard.h"
#include "dshow/memory_allocator.h"

CBaseInputPin::CBaseInputPin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
                             LPCWSTR pName)
    : CBasePin(pObjectName, pFilter, pLock, phr, pName, PINDIR_INPUT) {}

CBaseInputPin::~CBaseInputPin() = default;

HRESULT CBaseInputPin::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IMemInputPin) {
        return GetInterface(static_cast<IMemInputPin*>(this), ppv);
    }
    return CBasePin::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CBaseInputPin::GetAllocator(IMemAllocator** ppAllocator) noexcept {
    if (ppAllocator == nullptr) {
        return E_POINTER;
    }
    *ppAllocator = nullptr;
    const CAutoLock lock(m_pLock);
    if (!m_pAllocator) {
        const HRESULT hr = CreateMemoryAllocator(m_pAllocator.Put());
        if (FAILED(hr)) {
            return hr;
        }
    }
    m_pAllocator.CopyTo(ppAllocator);
    return S_OK;
}

HRESULT CBaseInputPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) noexcept {
    if (pAllocator == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    m_pAllocator = pAllocator;
    m_bReadOnly = bReadOnly != FALSE;
    return S_OK;
}

HRESULT CBaseInputPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) noexcept {
    return pProps == nullptr ? E_POINTER : E_NOTIMPL;
}

HRESULT CBaseInputPin::ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) noexcept {
    if (nSamplesProcessed == nullptr) {
        return E_POINTER;
    }
    *nSamplesProcessed = 0;
    if (pSamples == nullptr) {
        return E_POINTER;
    }
    for (LONG i = 0; i < nSamples; ++i) {
        const HRESULT hr = Receive(pSamples[i]);
        if (hr != S_OK) {
            return hr;
        }
        ++*nSamplesProcessed;
    }
    return S_OK;
}

HRESULT CBaseInputPin::BeginFlush() noexcept {
    const CAutoLock lock(m_pLock);
    m_bFlushing = true;
    return S_OK;
}

HRESULT CBaseInputPin::EndFlush() noexcept {
    const CAutoLock lock(m_pLock);
    m_bFlushing = false;
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT CBaseInputPin::Notify(IBaseFilter* /*pSelf*/, Quality /*q*/) noexcept {
    return S_OK; // quality messages come to output pins
}

HRESULT CBaseInputPin::BreakConnect() {
    if (m_pAllocator) {
        const HRESULT hr = m_pAllocator->Decommit();
        if (FAILED(hr)) {
            return hr;
        }
        m_pAllocator.Reset();
    }
    return S_OK;
}

HRESULT CBaseInputPin::Inactive() {
    m_bRunTimeError = false;
    m_bFlushing = false; // whatever comes of the rest: the next run must not begin inside an old flush
    return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseInputPin::CheckStreaming() {
    if (!IsConnected()) {
        return VFW_E_NOT_CONNECTED;
    }
    if (IsStopped()) {
        return VFW_E_WRONG_STATE;
    }
    if (m_bFlushing) {
        return S_FALSE;
    }
    return m_bRunTimeError ? VFW_E_RUNTIME_ERROR : S_OK;
}

HRESULT CBaseInputPin::PassNotify(Quality& q) {
    IQualityControl* const sink = m_pQSink;
    if (sink != nullptr) {
        return sink->Notify(m_pFilter, q);
    }
    const win::ComPtr<IQualityControl> upstream = m_Connected.Query<IQualityControl>(IID_IQualityControl);
    return upstream ? upstream->Notify(m_pFilter, q) : VFW_E_NOT_FOUND;
}

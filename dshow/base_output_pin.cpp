#include "dshow/base_output_pin.h"

#include "dshow/memory_allocator.h"

CBaseOutputPin::CBaseOutputPin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr,
                               LPCWSTR pName)
    : CBasePin(pObjectName, pFilter, pLock, phr, pName, PINDIR_OUTPUT) {}

CBaseOutputPin::~CBaseOutputPin() = default;

HRESULT CBaseOutputPin::EndOfStream() noexcept {
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::BeginFlush() noexcept {
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::EndFlush() noexcept {
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::CheckConnect(IPin* pPin) {
    const HRESULT hr = CBasePin::CheckConnect(pPin);
    if (FAILED(hr)) {
        return hr;
    }
    const HRESULT asked = pPin->QueryInterface(IID_IMemInputPin, m_pInputPin.PutVoid());
    return SUCCEEDED(asked) && !m_pInputPin ? E_NOINTERFACE : asked; // a stranger may promise one and give none
}

HRESULT CBaseOutputPin::BreakConnect() {
    if (m_pAllocator) {
        const HRESULT hr = m_pAllocator->Decommit();
        if (FAILED(hr)) {
            return hr;
        }
        m_pAllocator.Reset();
    }
    m_pInputPin.Reset();
    return S_OK;
}

HRESULT CBaseOutputPin::CompleteConnect(IPin* /*pReceivePin*/) {
    return DecideAllocator(m_pInputPin.Get(), m_pAllocator.Put());
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAlloc) {
    *ppAlloc = nullptr;
    win::ComPtr<IMemAllocator> allocator;
    if (SUCCEEDED(pPin->GetAllocator(allocator.Put())) && allocator &&
        SUCCEEDED(OfferAllocator(pPin, allocator.Get()))) {
        *ppAlloc = allocator.Detach();
        return S_OK;
    }
    HRESULT hr = InitAllocator(allocator.Put());
    if (SUCCEEDED(hr)) {
        hr = OfferAllocator(pPin, allocator.Get());
    }
    if (SUCCEEDED(hr)) {
        *ppAlloc = allocator.Detach();
    }
    return hr;
}

HRESULT CBaseOutputPin::OfferAllocator(IMemInputPin* pPin, IMemAllocator* pAlloc) {
    ALLOCATOR_PROPERTIES request{};
    if (FAILED(pPin->GetAllocatorRequirements(&request))) {
        request = {}; // most peers have no wishes
    }
    if (request.cbAlign == 0) {
        request.cbAlign = 1;
    }
    const HRESULT hr = DecideBufferSize(pAlloc, &request);
    return FAILED(hr) ? hr : pPin->NotifyAllocator(pAlloc, FALSE);
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** ppAlloc) {
    return CreateMemoryAllocator(ppAlloc);
}

HRESULT CBaseOutputPin::Active() {
    return m_pAllocator ? m_pAllocator->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Inactive() {
    m_bRunTimeError = false;
    return m_pAllocator ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStartTime, REFERENCE_TIME* pEndTime,
                                          DWORD dwFlags) {
    if (ppSample == nullptr) {
        return E_POINTER;
    }
    *ppSample = nullptr;
    return m_pAllocator ? m_pAllocator->GetBuffer(ppSample, pStartTime, pEndTime, dwFlags) : E_NOINTERFACE;
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* pSample) {
    return m_pInputPin ? m_pInputPin->Receive(pSample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream() {
    return m_Connected ? m_Connected->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush() {
    return m_Connected ? m_Connected->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush() {
    return m_Connected ? m_Connected->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) {
    return m_Connected ? m_Connected->NewSegment(tStart, tStop, dRate) : VFW_E_NOT_CONNECTED;
}

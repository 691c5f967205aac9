#include "mux/base_mux_output_pin.h"

#include "dshow/pos_pass_thru.h"
#include "mux/base_mux.h"

CBaseMuxOutputPin::CBaseMuxOutputPin(const WCHAR* objectName, CBaseMux* filter, CCritSec* lock, HRESULT* result,
                                     LPCWSTR pinName)
    : CBaseOutputPin(objectName, filter, lock, result, pinName), m_mux(filter) {}

STDMETHODIMP CBaseMuxOutputPin::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    if (iid == IID_IMediaSeeking || iid == IID_IMediaPosition) {
        return QueryPassThrough(iid, object);
    }
    return CBaseOutputPin::NonDelegatingQueryInterface(iid, object);
}

HRESULT CBaseMuxOutputPin::QueryPassThrough(REFIID iid, void** object) {
    *object = nullptr;
    const win::LockGuard lock(m_passThroughLock);
    if (!m_passThrough) {
        CBaseMuxInputPin* const input = m_mux->FirstInputPin();
        if (input == nullptr) {
            return E_NOINTERFACE;
        }
        const HRESULT hr = CreatePosPassThru(GetOwner(), FALSE, input, m_passThrough.Put());
        if (FAILED(hr)) {
            return hr;
        }
    }
    return m_passThrough->QueryInterface(iid, object);
}

HRESULT CBaseMuxOutputPin::CheckMediaType(const CMediaType* type) {
    return type == nullptr ? E_POINTER : m_mux->CheckOutputType(type);
}

HRESULT CBaseMuxOutputPin::SetMediaType(const CMediaType* type) {
    const HRESULT hr = CBaseOutputPin::SetMediaType(type);
    return FAILED(hr) ? hr : m_mux->SetOutputType(type);
}

HRESULT CBaseMuxOutputPin::GetMediaType(int position, CMediaType* type) {
    return m_mux->GetOutputMediaType(position, type);
}

HRESULT CBaseMuxOutputPin::CompleteConnect(IPin* peer) {
    const HRESULT hr = CBaseOutputPin::CompleteConnect(peer);
    return FAILED(hr) ? hr : m_mux->CompleteOutputConnect(peer);
}

HRESULT CBaseMuxOutputPin::BreakConnect() {
    const HRESULT hr = CBaseOutputPin::BreakConnect();
    return FAILED(hr) ? hr : m_mux->BreakOutputConnect();
}

HRESULT CBaseMuxOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) {
    return m_mux->DecideOutputBufferSize(allocator, properties);
}

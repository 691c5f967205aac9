#include "dshow/enum_pins.h"

#include <memory>

#include "dshow/base_pin.h"
#include "dshow/com_guard.h"

CEnumPins::CEnumPins(CBaseFilter* pFilter, const CEnumPins* pEnumPins)
    : m_pFilter(pFilter), m_filterReference(pFilter) {
    if (pEnumPins == nullptr) {
        Refresh();
        return;
    }
    m_Position = pEnumPins->m_Position;
    m_PinCount = pEnumPins->m_PinCount;
    m_Version = pEnumPins->m_Version;
}

HRESULT CEnumPins::QueryInterface(REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    return riid == IID_IUnknown || riid == IID_IEnumPins ? GetInterface(this, ppv) : E_NOINTERFACE;
}

ULONG CEnumPins::AddRef() noexcept {
    return static_cast<ULONG>(++m_cRef);
}

ULONG CEnumPins::Release() noexcept {
    const LONG left = --m_cRef;
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT CEnumPins::Next(ULONG cPins, IPin** ppPins, ULONG* pcFetched) noexcept {
    if (pcFetched != nullptr) {
        *pcFetched = 0;
    }
    if (ppPins == nullptr) {
        return E_POINTER;
    }
    if (pcFetched == nullptr && cPins > 1) {
        return E_INVALIDARG; // the caller could not know how many there are
    }
    if (cPins > 0) {
        *ppPins = nullptr;
    }
    ULONG fetched = 0;
    const HRESULT hr = ComGuard([&] { return Fetch(cPins, ppPins, &fetched); });
    if (FAILED(hr)) {
        for (ULONG i = 0; i < fetched; ++i) {
            ppPins[i]->Release();
            ppPins[i] = nullptr;
        }
        return hr;
    }
    if (pcFetched != nullptr) {
        *pcFetched = fetched;
    }
    return fetched == cPins ? S_OK : S_FALSE;
}

HRESULT CEnumPins::Fetch(ULONG count, IPin** ppPins, ULONG* fetched) {
    if (IsOutOfSync()) {
        return VFW_E_ENUM_OUT_OF_SYNC;
    }
    while (*fetched < count && m_Position < m_PinCount) {
        CBasePin* const pin = m_pFilter->GetPin(m_Position);
        if (pin == nullptr) {
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        ++m_Position;
        ppPins[*fetched] = pin;
        ppPins[*fetched]->AddRef();
        ++*fetched;
    }
    return S_OK;
}

HRESULT CEnumPins::Skip(ULONG cPins) noexcept {
    return ComGuard([&]() -> HRESULT {
        if (IsOutOfSync()) {
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        if (cPins > Remaining()) {
            return S_FALSE;
        }
        m_Position += static_cast<int>(cPins);
        return S_OK;
    });
}

HRESULT CEnumPins::Reset() noexcept {
    return ComGuard([&] {
        Refresh();
        return S_OK;
    });
}

HRESULT CEnumPins::Clone(IEnumPins** ppEnum) noexcept {
    if (ppEnum == nullptr) {
        return E_POINTER;
    }
    *ppEnum = nullptr;
    return ComGuard([&]() -> HRESULT {
        if (IsOutOfSync()) {
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        *ppEnum = std::make_unique<CEnumPins>(m_pFilter, this).release(); // the caller's first reference frees it
        return S_OK;
    });
}

bool CEnumPins::IsOutOfSync() const {
    return m_pFilter->GetPinVersion() != m_Version;
}

ULONG CEnumPins::Remaining() const {
    return m_Position < m_PinCount ? static_cast<ULONG>(m_PinCount - m_Position) : 0;
}

void CEnumPins::Refresh() {
    // The version first: a pin that is added meanwhile makes the enumerator out of sync, instead of being missed.
    m_Version = m_pFilter->GetPinVersion();
    m_PinCount = m_pFilter->GetPinCount();
    m_Position = 0;
}

#include "dshow/enum_pins.h"

#include <memory>

#include "dshow/base_pin.h"
#include "dshow/com_guard.h"

CEnumPins::CEnumPins(CBaseFilter* pFilter, const CEnumPins* pEnumPins)
    : CEnumerator(IID_IEnumPins), m_pFilter(pFilter), m_filterReference(pFilter) {
    if (pEnumPins == nullptr) {
        Refresh();
        return;
    }
    m_Position = pEnumPins->m_Position;
    m_PinCount = pEnumPins->m_PinCount;
    m_Version = pEnumPins->m_Version;
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

void CEnumPins::Free(IPin* item) {
    item->Release();
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

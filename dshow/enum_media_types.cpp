#include "dshow/enum_media_types.h"

#include <limits>
#include <memory>

#include "dshow/am_media_type.h"
#include "dshow/com_guard.h"

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pPin, const CEnumMediaTypes* pEnumMediaTypes)
    : CEnumerator(IID_IEnumMediaTypes), m_pPin(pPin), m_pinReference(pPin) {
    if (pEnumMediaTypes == nullptr) {
        m_Version = m_pPin->GetMediaTypeVersion();
        return;
    }
    m_Position = pEnumMediaTypes->m_Position;
    m_Version = pEnumMediaTypes->m_Version;
}

HRESULT CEnumMediaTypes::Fetch(ULONG count, AM_MEDIA_TYPE** ppMediaTypes, ULONG* fetched) {
    if (IsOutOfSync()) {
        return VFW_E_ENUM_OUT_OF_SYNC;
    }
    while (*fetched < count) {
        CMediaType type;
        const HRESULT hr = m_pPin->GetMediaType(m_Position, &type);
        if (hr == E_OUTOFMEMORY) {
            return hr;
        }
        if (hr != S_OK) {
            break;
        }
        AM_MEDIA_TYPE* const copy = CreateMediaType(&type);
        if (copy == nullptr) {
            return E_OUTOFMEMORY;
        }
        ++m_Position;
        ppMediaTypes[*fetched] = copy;
        ++*fetched;
    }
    return S_OK;
}

void CEnumMediaTypes::Free(AM_MEDIA_TYPE* item) {
    DeleteMediaType(item);
}

HRESULT CEnumMediaTypes::Skip(ULONG cMediaTypes) noexcept {
    return ComGuard([&]() -> HRESULT {
        if (IsOutOfSync()) {
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        if (cMediaTypes == 0) {
            return S_OK;
        }
        const auto room = static_cast<ULONG>(std::numeric_limits<int>::max() - m_Position);
        if (cMediaTypes > room) {
            return S_FALSE;
        }
        const int target = m_Position + static_cast<int>(cMediaTypes);
        CMediaType last;
        if (m_pPin->GetMediaType(target - 1, &last) != S_OK) {
            return S_FALSE;
        }
        m_Position = target;
        return S_OK;
    });
}

HRESULT CEnumMediaTypes::Reset() noexcept {
    return ComGuard([&] {
        m_Version = m_pPin->GetMediaTypeVersion();
        m_Position = 0;
        return S_OK;
    });
}

HRESULT CEnumMediaTypes::Clone(IEnumMediaTypes** ppEnum) noexcept {
    if (ppEnum == nullptr) {
        return E_POINTER;
    }
    *ppEnum = nullptr;
    return ComGuard([&]() -> HRESULT {
        if (IsOutOfSync()) {
            return VFW_E_ENUM_OUT_OF_SYNC;
        }
        *ppEnum = std::make_unique<CEnumMediaTypes>(m_pPin, this).release(); // the caller's first reference frees it
        return S_OK;
    });
}

bool CEnumMediaTypes::IsOutOfSync() const {
    return m_pPin->GetMediaTypeVersion() != m_Version;
}

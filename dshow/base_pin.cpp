#include "dshow/base_pin.h"

#include <memory>

#include "dshow/am_media_type.h"
#include "dshow/com_guard.h"
#include "dshow/enum_media_types.h"
#include "dshow/fixed_name.h"

CBasePin::CBasePin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* /*phr*/, LPCWSTR pName,
                   PIN_DIRECTION dir)
    : CUnknown(pObjectName, nullptr), m_name(pName == nullptr ? WideString() : WideString(pName)), m_dir(dir),
      m_pLock(pLock), m_pFilter(pFilter) {}

CBasePin::~CBasePin() = default;

HRESULT CBasePin::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IPin) {
        return GetInterface(static_cast<IPin*>(this), ppv);
    }
    if (riid == IID_IQualityControl) {
        return GetInterface(static_cast<IQualityControl*>(this), ppv);
    }
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

// A pin lives as long as its filter.
ULONG CBasePin::NonDelegatingAddRef() {
    return static_cast<IBaseFilter*>(m_pFilter)->AddRef();
}

ULONG CBasePin::NonDelegatingRelease() {
    return static_cast<IBaseFilter*>(m_pFilter)->Release();
}

HRESULT CBasePin::ConnectedTo(IPin** pPin) noexcept {
    if (pPin == nullptr) {
        return E_POINTER;
    }
    m_Connected.CopyTo(pPin);
    return *pPin != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* pmt) noexcept {
    if (pmt == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    if (!IsConnected()) {
        const CMediaType empty;
        CopyMediaType(pmt, &empty); // copies no block, so it cannot fail
        return VFW_E_NOT_CONNECTED;
    }
    return CopyMediaType(pmt, &m_mt);
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* pInfo) noexcept {
    if (pInfo == nullptr) {
        return E_POINTER;
    }
    pInfo->pFilter = m_pFilter;
    pInfo->pFilter->AddRef();
    CopyFixedName(pInfo->achName, m_name);
    pInfo->dir = m_dir;
    return S_OK;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* pPinDir) noexcept {
    if (pPinDir == nullptr) {
        return E_POINTER;
    }
    *pPinDir = m_dir;
    return S_OK;
}

HRESULT CBasePin::QueryId(LPWSTR* Id) noexcept {
    if (Id == nullptr) {
        return E_POINTER;
    }
    *Id = CopyToTaskString(m_name);
    return *Id != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* pmt) noexcept {
    if (pmt == nullptr) {
        return E_POINTER;
    }
    const HRESULT hr = ComGuard([&] {
        const CMediaType type(*pmt);
        return CheckMediaType(&type);
    });
    return FAILED(hr) ? S_FALSE : hr;
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** ppEnum) noexcept {
    if (ppEnum == nullptr) {
        return E_POINTER;
    }
    *ppEnum = nullptr;
    return ComGuard([&] {
        *ppEnum = std::make_unique<CEnumMediaTypes>(this, nullptr).release(); // the caller's first reference frees it
        return S_OK;
    });
}

// Every input goes to every output, which E_NOTIMPL stands for.
HRESULT CBasePin::QueryInternalConnections(IPin** /*apPin*/, ULONG* /*nPin*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CBasePin::EndOfStream() noexcept {
    return S_OK;
}

HRESULT CBasePin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) noexcept {
    m_tStart = tStart;
    m_tStop = tStop;
    m_dRate = dRate;
    return S_OK;
}

HRESULT CBasePin::Notify(IBaseFilter* /*pSelf*/, Quality /*q*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CBasePin::SetSink(IQualityControl* piqc) noexcept {
    const CAutoLock lock(m_pLock);
    m_pQSink = piqc;
    return S_OK;
}

HRESULT CBasePin::SetMediaType(const CMediaType* pmt) {
    return m_mt.Set(*pmt);
}

HRESULT CBasePin::GetMediaType(int /*iPosition*/, CMediaType* /*pMediaType*/) {
    return E_UNEXPECTED;
}

HRESULT CBasePin::Active() {
    return S_OK;
}

HRESULT CBasePin::Inactive() {
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT CBasePin::Run(REFERENCE_TIME /*tStart*/) {
    return S_OK;
}

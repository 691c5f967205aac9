#include "dshow/base_filter.h"

#include <memory>

#include "dshow/base_pin.h"
#include "dshow/com_guard.h"
#include "dshow/enum_pins.h"
#include "dshow/filter_setup.h"
#include "dshow/fixed_name.h"

CBaseFilter::CBaseFilter(const WCHAR* pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid)
    : CUnknown(pName, pUnk), m_clsid(clsid), m_pLock(pLock) {}

CBaseFilter::CBaseFilter(const WCHAR* pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid, HRESULT* /*phr*/)
    : CBaseFilter(pName, pUnk, pLock, clsid) {}

CBaseFilter::~CBaseFilter() = default;

HRESULT CBaseFilter::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IBaseFilter || riid == IID_IMediaFilter || riid == IID_IPersist) {
        return GetInterface(static_cast<IBaseFilter*>(this), ppv);
    }
    if (riid == IID_IAMovieSetup) {
        return GetInterface(static_cast<IAMovieSetup*>(this), ppv);
    }
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CBaseFilter::GetClassID(CLSID* pClsID) noexcept {
    if (pClsID == nullptr) {
        return E_POINTER;
    }
    *pClsID = m_clsid;
    return S_OK;
}

HRESULT CBaseFilter::GetState(DWORD /*dwMSecs*/, FILTER_STATE* State) noexcept {
    if (State == nullptr) {
        return E_POINTER;
    }
    *State = m_State; // changes of state are complete when they return, so there is nothing to wait for
    return S_OK;
}

HRESULT CBaseFilter::SetSyncSource(IReferenceClock* pClock) noexcept {
    const CAutoLock lock(m_pLock);
    m_pClock = pClock;
    return S_OK;
}

HRESULT CBaseFilter::GetSyncSource(IReferenceClock** pClock) noexcept {
    if (pClock == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    m_pClock.CopyTo(pClock);
    return S_OK;
}

HRESULT CBaseFilter::EnumPins(IEnumPins** ppEnum) noexcept {
    if (ppEnum == nullptr) {
        return E_POINTER;
    }
    *ppEnum = nullptr;
    return ComGuard([&] {
        *ppEnum = std::make_unique<CEnumPins>(this, nullptr).release(); // the caller's first reference frees it
        return S_OK;
    });
}

HRESULT CBaseFilter::FindPin(LPCWSTR Id, IPin** ppPin) noexcept {
    if (ppPin == nullptr) {
        return E_POINTER;
    }
    *ppPin = nullptr;
    if (Id == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&]() -> HRESULT {
        const CAutoLock lock(m_pLock);
        const WideStringView wanted(Id);
        const int count = GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* const pin = GetPin(i);
            if (pin != nullptr && wanted == pin->Name()) {
                return GetInterface(static_cast<IPin*>(pin), reinterpret_cast<void**>(ppPin));
            }
        }
        return VFW_E_NOT_FOUND;
    });
}

HRESULT CBaseFilter::QueryFilterInfo(FILTER_INFO* pInfo) noexcept {
    if (pInfo == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    CopyFixedName(pInfo->achName, m_name);
    pInfo->pGraph = m_pGraph;
    if (m_pGraph != nullptr) {
        m_pGraph->AddRef();
    }
    return S_OK;
}

HRESULT CBaseFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) noexcept {
    return ComGuard([&] {
        const CAutoLock lock(m_pLock);
        WideString name = pName == nullptr ? WideString() : WideString(pName);
        m_name.swap(name);
        m_pGraph = pGraph;
        m_pSink = nullptr;
        win::ComPtr<IMediaEventSink> sink;
        if (pGraph != nullptr && SUCCEEDED(pGraph->QueryInterface(IID_IMediaEventSink, sink.PutVoid()))) {
            m_pSink = sink.Get(); // uncounted, or graph and filter would keep each other alive
        }
        return S_OK;
    });
}

HRESULT CBaseFilter::QueryVendorInfo(LPWSTR* pVendorInfo) noexcept {
    if (pVendorInfo == nullptr) {
        return E_POINTER;
    }
    *pVendorInfo = nullptr;
    return E_NOTIMPL;
}

HRESULT CBaseFilter::Register() noexcept {
    return RegisterSetupData(TRUE);
}

HRESULT CBaseFilter::Unregister() noexcept {
    return RegisterSetupData(FALSE);
}

HRESULT CBaseFilter::RegisterSetupData(BOOL bRegister) {
    return ComGuard([&] {
        const AMOVIESETUP_FILTER* const setup = GetSetupData();
        return setup == nullptr ? S_FALSE : AMovieSetupRegisterFilter(setup, bRegister);
    });
}

HRESULT CBaseFilter::StreamTime(CRefTime& rtStream) {
    const CAutoLock lock(m_pLock);
    if (!m_pClock) {
        return VFW_E_NO_CLOCK;
    }
    REFERENCE_TIME now = 0;
    const HRESULT hr = m_pClock->GetTime(&now);
    if (SUCCEEDED(hr)) {
        rtStream = now - m_tStart;
    }
    return hr;
}

HRESULT CBaseFilter::NotifyEvent(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2) {
    IMediaEventSink* const sink = m_pSink;
    if (sink == nullptr) {
        return E_NOTIMPL;
    }
    if (EventCode == EC_COMPLETE) {
        EventParam2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    }
    return sink->Notify(EventCode, EventParam1, EventParam2);
}

HRESULT CBaseFilter::ReconnectPin(IPin* pPin, const AM_MEDIA_TYPE* pmt) {
    if (m_pGraph == nullptr) {
        return E_NOINTERFACE;
    }
    win::ComPtr<IFilterGraph2> graph2;
    if (SUCCEEDED(m_pGraph->QueryInterface(IID_IFilterGraph2, graph2.PutVoid()))) {
        return graph2->ReconnectEx(pPin, pmt);
    }
    return pmt == nullptr ? m_pGraph->Reconnect(pPin) : E_NOINTERFACE;
}

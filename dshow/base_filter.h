// CBaseFilter: a filter's state, clock, graph and pin list towards the outside.
//
// Owner: its references; the derived class owns the pins. The graph owns the filter, so it is held uncounted.
// Threads: state changes under *m_pLock, on the application's thread; the state is read from any.
// Errors: HRESULTs; what a pin's or a derived class's hook throws becomes one.
#pragma once

#include <atomic>

#include "dshow/crit_sec.h"
#include "dshow/factory_template.h"
#include "dshow/ref_time.h"
#include "dshow/unknown.h"
#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

class CBasePin;

class CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
  public:
    CBaseFilter(const WCHAR* pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid);
    CBaseFilter(const WCHAR* pName, LPUNKNOWN pUnk, CCritSec* pLock, REFCLSID clsid, HRESULT* phr);
    ~CBaseFilter() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IPersist
    STDMETHODIMP GetClassID(CLSID* pClsID) noexcept override;
    // IMediaFilter
    STDMETHODIMP Stop() noexcept override;
    STDMETHODIMP Pause() noexcept override;
    STDMETHODIMP Run(REFERENCE_TIME tStart) noexcept override;
    STDMETHODIMP GetState(DWORD dwMSecs, FILTER_STATE* State) noexcept override;
    STDMETHODIMP SetSyncSource(IReferenceClock* pClock) noexcept override;
    STDMETHODIMP GetSyncSource(IReferenceClock** pClock) noexcept override;
    // IBaseFilter
    STDMETHODIMP EnumPins(IEnumPins** ppEnum) noexcept override;
    STDMETHODIMP FindPin(LPCWSTR Id, IPin** ppPin) noexcept override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* pInfo) noexcept override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pName) noexcept override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* pVendorInfo) noexcept override;
    // IAMovieSetup: S_FALSE without setup data
    STDMETHODIMP Register() noexcept override;
    STDMETHODIMP Unregister() noexcept override;

    BOOL IsActive() const noexcept { return m_State != State_Stopped; }
    BOOL IsStopped() const noexcept { return m_State == State_Stopped; }
    // The time since Run; VFW_E_NO_CLOCK without a clock.
    virtual HRESULT StreamTime(CRefTime& rtStream);

    virtual int GetPinCount() = 0;
    // Not counted; null when out of range.
    virtual CBasePin* GetPin(int n) = 0;
    // What Register tells the filter mapper; none by default.
    virtual const AMOVIESETUP_FILTER* GetSetupData() { return nullptr; }

    // Every change of the pin list increments the version; enumerators made before are then out of sync.
    virtual LONG GetPinVersion() { return m_PinVersion; }
    void IncrementPinVersion() { ++m_PinVersion; }

    // Tells the graph; E_NOTIMPL outside one. EC_COMPLETE carries this filter in place of the second parameter.
    HRESULT NotifyEvent(LONG EventCode, LONG_PTR EventParam1, LONG_PTR EventParam2);
    IFilterGraph* GetFilterGraph() const noexcept { return m_pGraph; }
    // Asks the graph to connect the pin again, with that type if one is given. E_NOINTERFACE if it cannot.
    HRESULT ReconnectPin(IPin* pPin, const AM_MEDIA_TYPE* pmt);

  protected:
    friend class CBasePin;

    std::atomic<FILTER_STATE> m_State{State_Stopped};
    win::ComPtr<IReferenceClock> m_pClock QRX_GUARDED_BY(m_pLock);
    CRefTime m_tStart QRX_GUARDED_BY(m_pLock); // the clock's time at Run
    CLSID m_clsid;
    CCritSec* m_pLock;                         // not owned: the filter lock
    WideString m_name QRX_GUARDED_BY(m_pLock); // given by the graph
    // Any thread reads these two without the lock: a filter joins and leaves its graph while nothing streams.
    IFilterGraph* m_pGraph = nullptr;   // not counted
    IMediaEventSink* m_pSink = nullptr; // not counted: a part of the graph
    std::atomic<LONG> m_PinVersion{1};

  private:
    template <typename Call>
    HRESULT ForEachConnectedPin(Call call);
    HRESULT StopPins() QRX_REQUIRES(m_pLock);
    HRESULT ActivatePins() QRX_REQUIRES(m_pLock);
    HRESULT RunPins(REFERENCE_TIME tStart) QRX_REQUIRES(m_pLock);
    HRESULT RegisterSetupData(BOOL bRegister);
};

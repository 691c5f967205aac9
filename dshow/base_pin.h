// CBasePin: a pin's connection: who may connect to it, with which media type.
//
// Owner: the filter; references on the pin are references on the filter. The peer is counted while connected.
// Threads: connecting and disconnecting under *m_pLock; Notify and NewSegment also on streaming threads.
// Errors: VFW_E_… as documented for IPin; what a hook throws becomes an HRESULT.
#pragma once

#include <atomic>

#include "dshow/base_filter.h"
#include "dshow/crit_sec.h"
#include "dshow/media_type.h"
#include "dshow/ref_time.h"
#include "dshow/unknown.h"
#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

class CBasePin : public CUnknown, public IPin, public IQualityControl {
  public:
    CBasePin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName,
             PIN_DIRECTION dir);
    ~CBasePin() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // IPin
    STDMETHODIMP Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) noexcept override;
    STDMETHODIMP ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) noexcept override;
    STDMETHODIMP Disconnect() noexcept override;
    STDMETHODIMP ConnectedTo(IPin** pPin) noexcept override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* pmt) noexcept override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* pInfo) noexcept override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* pPinDir) noexcept override;
    STDMETHODIMP QueryId(LPWSTR* Id) noexcept override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* pmt) noexcept override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** ppEnum) noexcept override;
    STDMETHODIMP QueryInternalConnections(IPin** apPin, ULONG* nPin) noexcept override;
    STDMETHODIMP EndOfStream() noexcept override;
    // BeginFlush and EndFlush are left to the derived classes.
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) noexcept override;
    // IQualityControl
    STDMETHODIMP Notify(IBaseFilter* pSelf, Quality q) noexcept override;
    STDMETHODIMP SetSink(IQualityControl* piqc) noexcept override;

    BOOL IsConnected() const noexcept { return m_Connected ? TRUE : FALSE; }
    IPin* GetConnected() const noexcept { return m_Connected.Get(); }
    BOOL IsStopped() const noexcept { return m_pFilter->IsStopped(); }
    LPCWSTR Name() const noexcept { return m_name.c_str(); }
    CBaseFilter* GetFilter() const noexcept { return m_pFilter; }
    const CMediaType& CurrentMediaType() const noexcept { return m_mt; }
    REFERENCE_TIME CurrentStartTime() const noexcept { return m_tStart; }
    REFERENCE_TIME CurrentStopTime() const noexcept { return m_tStop; }
    double CurrentRate() const noexcept { return m_dRate; }
    // Types can change while the graph is active, for pins that allow it.
    void SetReconnectWhenActive(bool canReconnect) noexcept { m_bCanReconnectWhenActive = canReconnect; }
    bool CanReconnectWhenActive() const noexcept { return m_bCanReconnectWhenActive; }

    // Hooks of a connection; any failure refuses it. BreakConnect also undoes a connection half made.
    virtual HRESULT CheckConnect(IPin* pPin);
    virtual HRESULT BreakConnect();
    virtual HRESULT CompleteConnect(IPin* pReceivePin);
    virtual HRESULT CheckMediaType(const CMediaType* pmt) = 0;
    virtual HRESULT SetMediaType(const CMediaType* pmt);

    // The iPosition-th preferred type: S_OK, VFW_S_NO_MORE_ITEMS, or a failure.
    virtual HRESULT GetMediaType(int iPosition, CMediaType* pMediaType);
    virtual LONG GetMediaTypeVersion() { return m_TypeVersion; }
    void IncrementTypeVersion() { ++m_TypeVersion; }

    // The filter's changes of state, for connected pins only.
    virtual HRESULT Active();
    virtual HRESULT Inactive();
    virtual HRESULT Run(REFERENCE_TIME tStart);

  protected:
    HRESULT AttemptConnection(IPin* pReceivePin, const CMediaType* pmt) QRX_REQUIRES(m_pLock);
    HRESULT TryMediaTypes(IPin* pReceivePin, const CMediaType* pmt, IEnumMediaTypes* pEnum) QRX_REQUIRES(m_pLock);
    // Finds a type for the connection: the one given, or the first proposal of either pin that fits it.
    HRESULT AgreeMediaType(IPin* pReceivePin, const CMediaType* pmt) QRX_REQUIRES(m_pLock);
    HRESULT DisconnectInternal() QRX_REQUIRES(m_pLock);

    WideString m_name;
    win::ComPtr<IPin> m_Connected;
    PIN_DIRECTION m_dir;
    CCritSec* m_pLock; // not owned: the filter lock
    std::atomic<bool> m_bRunTimeError{false};
    bool m_bCanReconnectWhenActive = false;
    bool m_bTryMyTypesFirst = false;     // else the receiving pin proposes first
    CBaseFilter* m_pFilter;              // not counted: it owns this pin
    IQualityControl* m_pQSink = nullptr; // not counted
    std::atomic<LONG> m_TypeVersion{1};
    CMediaType m_mt; // of the connection
    CRefTime m_tStart;
    CRefTime m_tStop;
    double m_dRate = 1.0;

  private:
    HRESULT CheckCanConnect() const;
    HRESULT TakePeer(IPin* peer, const CMediaType* pmt) QRX_REQUIRES(m_pLock);
    HRESULT OfferConnection(IPin* pReceivePin, const CMediaType* pmt) QRX_REQUIRES(m_pLock);
    HRESULT AcceptConnection(IPin* pConnector, const CMediaType* pmt) QRX_REQUIRES(m_pLock);
    void AbandonConnection() QRX_REQUIRES(m_pLock);
};

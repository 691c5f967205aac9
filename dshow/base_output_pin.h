// CBaseOutputPin: an output pin that delivers samples to a peer's IMemInputPin.
//
// Owner: the filter. It holds references on the peer's IMemInputPin and on the allocator while connected.
// Threads: connecting under the filter lock; the Deliver… methods on the filter's streaming thread.
// Errors: VFW_E_NOT_CONNECTED, VFW_E_NO_ALLOCATOR; E_UNEXPECTED for calls that belong to input pins.
#pragma once

#include "dshow/base_pin.h"

class CBaseOutputPin : public CBasePin {
  public:
    CBaseOutputPin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName);
    ~CBaseOutputPin() override;

    // IPin
    STDMETHODIMP EndOfStream() noexcept override;
    STDMETHODIMP BeginFlush() noexcept override;
    STDMETHODIMP EndFlush() noexcept override;

    HRESULT CheckConnect(IPin* pPin) override;
    HRESULT BreakConnect() override;
    HRESULT CompleteConnect(IPin* pReceivePin) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

    // Agrees on an allocator: the peer's own if it serves, else one from InitAllocator.
    virtual HRESULT DecideAllocator(IMemInputPin* pPin, IMemAllocator** ppAlloc);
    virtual HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* ppropInputRequest) = 0;
    // The system's memory allocator.
    virtual HRESULT InitAllocator(IMemAllocator** ppAlloc);

    virtual HRESULT GetDeliveryBuffer(IMediaSample** ppSample, REFERENCE_TIME* pStartTime, REFERENCE_TIME* pEndTime,
                                      DWORD dwFlags);
    virtual HRESULT Deliver(IMediaSample* pSample);
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate);

  protected:
    // Sets it up as the peer wishes, and has the peer agree.
    HRESULT OfferAllocator(IMemInputPin* pPin, IMemAllocator* pAlloc);

    win::ComPtr<IMemAllocator> m_pAllocator;
    win::ComPtr<IMemInputPin> m_pInputPin;
};

// CBaseInputPin: an input pin that takes samples through IMemInputPin.
//
// Owner: the filter. It holds a reference on the allocator that the connection agreed on.
// Threads: Receive, EndOfStream on the upstream streaming thread; flushing and state from others, without a lock.
// Errors: VFW_E_NOT_CONNECTED, VFW_E_WRONG_STATE, VFW_E_RUNTIME_ERROR; S_FALSE while flushing.
#pragma once

#include <atomic>

#include "dshow/base_pin.h"

class CBaseInputPin : public CBasePin, public IMemInputPin {
  public:
    CBaseInputPin(const WCHAR* pObjectName, CBaseFilter* pFilter, CCritSec* pLock, HRESULT* phr, LPCWSTR pName);
    ~CBaseInputPin() override;

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IMemInputPin
    STDMETHODIMP GetAllocator(IMemAllocator** ppAllocator) noexcept override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) noexcept override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) noexcept override;
    // Checks that the pin is streaming and that the sample brings no type that the pin refuses.
    STDMETHODIMP Receive(IMediaSample* pSample) noexcept override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** pSamples, LONG nSamples, LONG* nSamplesProcessed) noexcept override;
    // S_FALSE only if every connected output says that it cannot block.
    STDMETHODIMP ReceiveCanBlock() noexcept override;
    // IPin
    STDMETHODIMP BeginFlush() noexcept override;
    STDMETHODIMP EndFlush() noexcept override;
    // IQualityControl
    STDMETHODIMP Notify(IBaseFilter* pSelf, Quality q) noexcept override;

    HRESULT BreakConnect() override;
    HRESULT Inactive() override;

    // S_OK when a sample may be taken now.
    virtual HRESULT CheckStreaming();
    BOOL IsReadOnly() const noexcept { return m_bReadOnly ? TRUE : FALSE; }
    BOOL IsFlushing() const noexcept { return m_bFlushing ? TRUE : FALSE; }
    // Passes a quality message on to the sink, or upstream without one.
    HRESULT PassNotify(Quality& q);
    // Properties of the sample that Receive saw last; its interfaces and pointers are not to be kept.
    AM_SAMPLE2_PROPERTIES* SampleProps() noexcept { return &m_SampleProps; }

  protected:
    win::ComPtr<IMemAllocator> m_pAllocator;
    bool m_bReadOnly = false;
    std::atomic<bool> m_bFlushing{false};
    AM_SAMPLE2_PROPERTIES m_SampleProps{};

  private:
    HRESULT ReceiveSample(IMediaSample* pSample);
    HRESULT ReadSampleProps(IMediaSample* pSample);
    HRESULT ReadPlainSampleProps(IMediaSample* pSample);
    HRESULT RefuseNewType();

    CMediaType m_sampleType; // behind m_SampleProps.pMediaType when the sample handed out a copy
};

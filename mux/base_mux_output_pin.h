// CBaseMuxOutputPin: the muxer's one output. It delivers no samples: the filter writes into the peer's IStream.
//
// Owner: the filter. It owns the object that passes seeking on upstream, made when somebody first asks for it.
// Threads: connecting under the filter lock; interfaces are asked for from any thread.
// Errors: as the filter's hooks answer.
#pragma once

#include "dshow/base_output_pin.h"
#include "win/critical_section.h"

class CBaseMux;

class CBaseMuxOutputPin : public CBaseOutputPin {
  public:
    CBaseMuxOutputPin(const WCHAR* objectName, CBaseMux* filter, CCritSec* lock, HRESULT* result, LPCWSTR pinName);

    // IMediaSeeking and IMediaPosition besides the base's interfaces
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;
    // CBasePin
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT CompleteConnect(IPin* peer) override;
    HRESULT BreakConnect() override;
    // CBaseOutputPin
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) override;

  private:
    HRESULT QueryPassThrough(REFIID iid, void** object);

    CBaseMux* const m_mux; // not owned: it owns this pin
    // Not the filter lock: the peer may ask from the worker's thread, which Stop joins under that lock.
    win::CriticalSection m_passThroughLock;
    win::ComPtr<IUnknown> m_passThrough QRX_GUARDED_BY(m_passThroughLock); // aggregated by this pin
};

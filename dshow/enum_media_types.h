// CEnumMediaTypes: enumerates the media types that a pin proposes.
//
// Owner: its references, counted from 1; it keeps the pin's filter alive. Threads: one at a time.
// Errors: VFW_E_ENUM_OUT_OF_SYNC once the pin's types have changed, until Reset.
#pragma once

#include <atomic>

#include "dshow/base_pin.h"
#include "win/com_ptr.h"
#include "win/platform.h"

class CEnumMediaTypes final : public IEnumMediaTypes {
  public:
    // Begins at the first type, or where pEnumMediaTypes stands.
    CEnumMediaTypes(CBasePin* pPin, const CEnumMediaTypes* pEnumMediaTypes);
    CEnumMediaTypes(const CEnumMediaTypes&) = delete;
    CEnumMediaTypes& operator=(const CEnumMediaTypes&) = delete;
    virtual ~CEnumMediaTypes() = default;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;
    // IEnumMediaTypes
    STDMETHODIMP Next(ULONG cMediaTypes, AM_MEDIA_TYPE** ppMediaTypes, ULONG* pcFetched) noexcept override;
    STDMETHODIMP Skip(ULONG cMediaTypes) noexcept override;
    STDMETHODIMP Reset() noexcept override;
    STDMETHODIMP Clone(IEnumMediaTypes** ppEnum) noexcept override;

  private:
    [[nodiscard]] bool IsOutOfSync() const;
    HRESULT Fetch(ULONG count, AM_MEDIA_TYPE** ppMediaTypes, ULONG* fetched);

    std::atomic<LONG> m_cRef{1};
    CBasePin* m_pPin; // held by m_pinReference
    win::ComPtr<IPin> m_pinReference;
    int m_Position = 0;
    LONG m_Version = 0;
};

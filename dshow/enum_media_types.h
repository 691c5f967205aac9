// CEnumMediaTypes: enumerates the media types that a pin proposes.
//
// Owner: its references, counted from 1; it keeps the pin's filter alive. Threads: one at a time.
// Errors: VFW_E_ENUM_OUT_OF_SYNC once the pin's types have changed, until Reset.
#pragma once

#include "dshow/base_pin.h"
#include "dshow/enumerator.h"
#include "win/com_ptr.h"
#include "win/platform.h"

class CEnumMediaTypes final : public CEnumerator<IEnumMediaTypes, AM_MEDIA_TYPE> {
  public:
    // Begins at the first type, or where pEnumMediaTypes stands.
    CEnumMediaTypes(CBasePin* pPin, const CEnumMediaTypes* pEnumMediaTypes);

    // IEnumMediaTypes
    STDMETHODIMP Skip(ULONG cMediaTypes) noexcept override;
    STDMETHODIMP Reset() noexcept override;
    STDMETHODIMP Clone(IEnumMediaTypes** ppEnum) noexcept override;

  private:
    [[nodiscard]] bool IsOutOfSync() const;
    HRESULT Fetch(ULONG count, AM_MEDIA_TYPE** ppMediaTypes, ULONG* fetched) override;
    void Free(AM_MEDIA_TYPE* item) override;

    CBasePin* m_pPin; // held by m_pinReference
    win::ComPtr<IPin> m_pinReference;
    int m_Position = 0;
    LONG m_Version = 0;
};

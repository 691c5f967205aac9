// CEnumPins: enumerates the pins of a filter.
//
// Owner: its references, counted from 1; it keeps the filter alive. Threads: one at a time, as its clients agree.
// Errors: VFW_E_ENUM_OUT_OF_SYNC once the filter's pins have changed, until Reset.
#pragma once

#include "dshow/base_filter.h"
#include "dshow/enumerator.h"
#include "win/com_ptr.h"
#include "win/platform.h"

class CEnumPins final : public CEnumerator<IEnumPins, IPin> {
  public:
    // Begins at the first pin, or where pEnumPins stands.
    CEnumPins(CBaseFilter* pFilter, const CEnumPins* pEnumPins);

    // IEnumPins
    STDMETHODIMP Skip(ULONG cPins) noexcept override;
    STDMETHODIMP Reset() noexcept override;
    STDMETHODIMP Clone(IEnumPins** ppEnum) noexcept override;

  private:
    [[nodiscard]] bool IsOutOfSync() const;
    [[nodiscard]] ULONG Remaining() const;
    HRESULT Fetch(ULONG count, IPin** ppPins, ULONG* fetched) override;
    void Free(IPin* item) override;
    void Refresh();

    CBaseFilter* m_pFilter; // held by m_filterReference
    win::ComPtr<IBaseFilter> m_filterReference;
    int m_Position = 0;
    int m_PinCount = 0;
    LONG m_Version = 0;
};

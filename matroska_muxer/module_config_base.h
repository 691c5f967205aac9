// CModuleConfigBase: the ten methods of IModuleConfig that the filter does not support.
//
// Owner: the object that derives from it. Threads: any. Errors: E_NOTIMPL; what they would give is cleared.
#pragma once

#include <qrx_mkvmuxer.h>

class CModuleConfigBase : public IModuleConfig {
  public:
    // IModuleConfig
    STDMETHODIMP DescribeValue(const GUID* key, IUnknown** description) noexcept override;
    STDMETHODIMP IsSupported(const GUID* key) noexcept override;
    STDMETHODIMP SetDefaults() noexcept override;
    STDMETHODIMP EnumValues(LONG* count, GUID** keys) noexcept override;
    STDMETHODIMP CommitChanges() noexcept override;
    STDMETHODIMP DeclineChanges() noexcept override;
    STDMETHODIMP SaveToRegistry(HKEY root, BSTR path) noexcept override;
    STDMETHODIMP LoadFromRegistry(HKEY root, BSTR path) noexcept override;
    STDMETHODIMP Advise(IUnknown* sink) noexcept override;
    STDMETHODIMP Unadvise(IUnknown* sink) noexcept override;

  protected:
    ~CModuleConfigBase() = default;
};

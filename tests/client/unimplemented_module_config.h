// UnimplementedModuleConfig: the methods of IModuleConfig and IPersistStream, none of which a fake need do; each
// overrides those that its test is about.
#pragma once

#include <qrx_mkvmuxer.h>

namespace test_client {

class UnimplementedModuleConfig : public IModuleConfig {
  public:
    // IModuleConfig
    HRESULT STDMETHODCALLTYPE SetValue(const GUID*, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetValue(const GUID*, VARIANT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DescribeValue(const GUID*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsSupported(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaults() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumValues(LONG*, GUID**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CommitChanges() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeclineChanges() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveToRegistry(HKEY, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LoadFromRegistry(HKEY, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(IUnknown*) override { return E_NOTIMPL; }
    // IPersistStream
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
};

} // namespace test_client

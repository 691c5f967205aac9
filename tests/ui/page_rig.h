// PageRig: one property page of the built module, in a dialog and with a site that counts.
//
// Owner: the test; the page's references are checked when the rig goes. Threads: one.
// Errors: a page that cannot be made fails the running test.
#pragma once

#include <optional>

#include "tests/module/loaded_module.h"
#include "tests/support/reference_count.h"
#include "tests/ui/host_dialog.h"
#include "tests/ui/tree_driver.h"

namespace ui_test {

class FakePageSite final : public IPropertyPageSite {
  public:
    int changes = 0;
    DWORD lastFlags = 0;

    [[nodiscard]] LONG References() const { return m_references.Count(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD flags) override {
        ++changes;
        lastFlags = flags;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetLocaleID(LCID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) override { return E_NOTIMPL; }

  private:
    test_support::ReferenceCount m_references{"a page site"};
};

class PageRig {
  public:
    explicit PageRig(REFCLSID page);
    ~PageRig();
    PageRig(const PageRig&) = delete;
    PageRig& operator=(const PageRig&) = delete;

    [[nodiscard]] IPropertyPage& Page() const { return *m_page.Get(); }
    [[nodiscard]] FakePageSite& Site() { return m_site; }
    // Gone after CloseHost.
    [[nodiscard]] HostDialog& Host() { return *m_host; }
    void CloseHost() { m_host.reset(); }

    HRESULT SetObject(IUnknown* object);
    // In the host's place for the page.
    HRESULT Activate();
    // Site, object and window, which all must work.
    void Show(IUnknown* object);
    // The page's window; null while it is not active.
    [[nodiscard]] HWND Window() const;
    [[nodiscard]] TreeDriver Tree() const { return TreeDriver::Below(Window()); }
    void ClickValue(const std::wstring& path) const;
    void ClickLabel(const std::wstring& path) const;

  private:
    LoadedModule m_module;
    std::optional<HostDialog> m_host{std::in_place};
    FakePageSite m_site;
    win::ComPtr<IPropertyPage> m_page;
};

} // namespace ui_test

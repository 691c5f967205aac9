// FakeFilterMapper: stands in for the system's filter mapper in this process and remembers what is registered with it.
//
// Owner: the test; the class object is revoked when it goes. Threads: the apartment's. Errors: what is not asked of it
// here is E_NOTIMPL.
#pragma once

#include <vector>

#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

// A registered pin, by value.
struct RegisteredPin {
    WideString name;
    BOOL rendered;
    BOOL output;
    BOOL zero;
    BOOL many;
    CLSID connectsToFilter;
    bool connectsToPin;
    std::vector<std::pair<GUID, GUID>> types; // major, minor
};

struct RegisteredFilter {
    CLSID clsid;
    WideString name;
    bool hasMoniker;
    bool hasCategory;
    bool hasInstance;
    DWORD version;
    DWORD merit;
    std::vector<RegisteredPin> pins;
};

class FakeFilterMapper final : public IFilterMapper2, public IClassFactory {
  public:
    FakeFilterMapper() {
        CoRegisterClassObject(CLSID_FilterMapper2, static_cast<IClassFactory*>(this), CLSCTX_INPROC_SERVER,
                              REGCLS_MULTIPLEUSE, &m_cookie);
    }
    ~FakeFilterMapper() { CoRevokeClassObject(m_cookie); }
    FakeFilterMapper(const FakeFilterMapper&) = delete;
    FakeFilterMapper& operator=(const FakeFilterMapper&) = delete;

    [[nodiscard]] const std::vector<RegisteredFilter>& Filters() const { return m_filters; }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid == IID_IFilterMapper2) {
            *object = static_cast<IFilterMapper2*>(this);
        } else if (iid == IID_IClassFactory || iid == IID_IUnknown) {
            *object = static_cast<IClassFactory*>(this);
        }
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    // IClassFactory
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) override {
        return QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
    // IFilterMapper2
    HRESULT STDMETHODCALLTYPE CreateCategory(REFCLSID, DWORD, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnregisterFilter(const CLSID*, LPCWSTR, REFCLSID) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RegisterFilter(REFCLSID clsid, LPCWSTR name, IMoniker** moniker, const CLSID* category,
                                             LPCWSTR instance, const REGFILTER2* filter) override {
        RegisteredFilter seen{
            clsid,           name, moniker != nullptr, category != nullptr, instance != nullptr, filter->dwVersion,
            filter->dwMerit, {}};
        for (ULONG i = 0; i < filter->cPins; ++i) {
            seen.pins.push_back(PinOf(filter->rgPins[i]));
        }
        m_filters.push_back(std::move(seen));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE EnumMatchingFilters(IEnumMoniker**, DWORD, BOOL, DWORD, BOOL, DWORD, const GUID*,
                                                  const REGPINMEDIUM*, const CLSID*, BOOL, BOOL, DWORD, const GUID*,
                                                  const REGPINMEDIUM*, const CLSID*) override {
        return E_NOTIMPL;
    }

  private:
    static RegisteredPin PinOf(const REGFILTERPINS& pin) {
        RegisteredPin seen{pin.strName == nullptr ? WideString() : WideString(pin.strName),
                           pin.bRendered,
                           pin.bOutput,
                           pin.bZero,
                           pin.bMany,
                           pin.clsConnectsToFilter == nullptr ? CLSID{} : *pin.clsConnectsToFilter,
                           pin.strConnectsToPin != nullptr,
                           {}};
        for (UINT i = 0; i < pin.nMediaTypes; ++i) {
            seen.types.emplace_back(*pin.lpMediaType[i].clsMajorType, *pin.lpMediaType[i].clsMinorType);
        }
        return seen;
    }

    DWORD m_cookie = 0;
    std::vector<RegisteredFilter> m_filters;
};

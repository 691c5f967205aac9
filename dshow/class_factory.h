// CClassFactory: creates objects through one factory template, and counts the locks on the module.
//
// Owner: its references, counted from 0; it is an object of the module while it lives. Threads: any.
// Errors: E_NOINTERFACE for aggregation without IUnknown; what the template's function reports or throws.
#pragma once

#include <atomic>

#include "dshow/base_object.h"
#include "dshow/factory_template.h"
#include "win/platform.h"

class CClassFactory final : public IClassFactory, public CBaseObject {
  public:
    explicit CClassFactory(const CFactoryTemplate* pTemplate);

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override;
    STDMETHODIMP_(ULONG) AddRef() noexcept override;
    STDMETHODIMP_(ULONG) Release() noexcept override;
    // IClassFactory
    STDMETHODIMP CreateInstance(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) noexcept override;
    STDMETHODIMP LockServer(BOOL fLock) noexcept override;

    // Whether any client keeps the module loaded.
    static BOOL IsLocked() noexcept;

  private:
    ~CClassFactory() = default;
    HRESULT CreateObject(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) const;

    const CFactoryTemplate* const m_pTemplate; // static data of the module
    std::atomic<LONG> m_cRef{0};
};

#include "dshow/class_factory.h"

#include "dshow/com_guard.h"

namespace {

std::atomic<LONG> g_serverLocks{0};

} // namespace

CClassFactory::CClassFactory(const CFactoryTemplate* pTemplate)
    : CBaseObject(OLESTR("Class Factory")), m_pTemplate(pTemplate) {}

HRESULT CClassFactory::QueryInterface(REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    return riid == IID_IUnknown || riid == IID_IClassFactory ? GetInterface(this, ppv) : E_NOINTERFACE;
}

ULONG CClassFactory::AddRef() noexcept {
    return static_cast<ULONG>(++m_cRef);
}

ULONG CClassFactory::Release() noexcept {
    const LONG left = --m_cRef;
    if (left == 0) {
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT CClassFactory::CreateInstance(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (pUnkOuter != nullptr && riid != IID_IUnknown) {
        return E_NOINTERFACE; // an outer object needs the inner one's own IUnknown
    }
    return ComGuard([&] { return CreateObject(pUnkOuter, riid, ppv); });
}

HRESULT CClassFactory::CreateObject(LPUNKNOWN pUnkOuter, REFIID riid, void** ppv) const {
    HRESULT hr = S_OK;
    CUnknown* const object = m_pTemplate->CreateInstance(pUnkOuter, &hr);
    if (object == nullptr) {
        return FAILED(hr) ? hr : E_OUTOFMEMORY;
    }
    if (FAILED(hr)) {
        delete object; // nobody holds a reference on it yet
        return hr;
    }
    object->NonDelegatingAddRef();
    hr = ComGuard([&] { return object->NonDelegatingQueryInterface(riid, ppv); });
    object->NonDelegatingRelease(); // ends it if the interface is not there
    return hr;
}

HRESULT CClassFactory::LockServer(BOOL fLock) noexcept {
    if (fLock) {
        ++g_serverLocks;
        return S_OK;
    }
    // An unlock too many must not cancel another client's lock to come.
    LONG locks = g_serverLocks;
    while (locks > 0 && !g_serverLocks.compare_exchange_weak(locks, locks - 1)) {
    }
    return S_OK;
}

BOOL CClassFactory::IsLocked() noexcept {
    return g_serverLocks > 0;
}

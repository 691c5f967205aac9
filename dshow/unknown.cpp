#include "dshow/unknown.h"

#include "dshow/com_guard.h"

CUnknown::CUnknown(const WCHAR* pName, LPUNKNOWN pUnk)
    : CBaseObject(pName), m_inner(*this), m_pUnknown(pUnk != nullptr ? pUnk : &m_inner) {}

CUnknown::CUnknown(const WCHAR* pName, LPUNKNOWN pUnk, HRESULT* /*phr*/) : CUnknown(pName, pUnk) {}

CUnknown::~CUnknown() = default;

HRESULT CUnknown::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = nullptr;
    return riid == IID_IUnknown ? GetInterface(&m_inner, ppv) : E_NOINTERFACE;
}

ULONG CUnknown::NonDelegatingAddRef() {
    return static_cast<ULONG>(++m_cRef);
}

ULONG CUnknown::NonDelegatingRelease() {
    const LONG left = --m_cRef;
    if (left == 0) {
        // A destructor may hand the object out once more; its references must not delete it a second time.
        ++m_cRef;
        delete this;
    }
    return static_cast<ULONG>(left);
}

HRESULT CUnknown::Inner::QueryInterface(REFIID riid, void** ppv) noexcept {
    return ComGuard([&] { return m_object.NonDelegatingQueryInterface(riid, ppv); });
}

ULONG CUnknown::Inner::AddRef() noexcept {
    return m_object.NonDelegatingAddRef();
}

ULONG CUnknown::Inner::Release() noexcept {
    return m_object.NonDelegatingRelease();
}

HRESULT GetInterface(LPUNKNOWN pUnk, void** ppv) noexcept {
    if (ppv == nullptr) {
        return E_POINTER;
    }
    *ppv = pUnk;
    pUnk->AddRef();
    return S_OK;
}

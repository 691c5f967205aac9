// CUnknown: the one implementation of IUnknown, aggregation included.
//
// Owner: its references; the count begins at 0, and Release deletes the object when it returns there.
// Threads: AddRef and Release from any.
// Errors: what a derived NonDelegatingQueryInterface throws becomes an HRESULT before it leaves QueryInterface.
#pragma once

#include <atomic>

#include "dshow/base_object.h"
#include "win/platform.h"

class CUnknown;

// The object's own IUnknown, which an outer object that aggregates it never overrides.
class INonDelegatingUnknown {
  public:
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID riid, void** ppv) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

  protected:
    ~INonDelegatingUnknown() = default;
};

// Creates an object of a class; a failure goes to *phr, and the object may then be null.
using LPFNNewCOMObject = CUnknown* (*)(LPUNKNOWN pUnkOuter, HRESULT* phr);
// Called for each class when the module is loaded and unloaded.
using LPFNInitRoutine = void (*)(BOOL bLoading, const CLSID* rclsid);

class CUnknown : public INonDelegatingUnknown, public CBaseObject {
  public:
    CUnknown(const WCHAR* pName, LPUNKNOWN pUnk);
    // As published: a constructor leaves *phr alone unless it fails.
    CUnknown(const WCHAR* pName, LPUNKNOWN pUnk, HRESULT* phr);
    virtual ~CUnknown();

    // The outer object, or this object's own IUnknown.
    LPUNKNOWN GetOwner() const noexcept { return m_pUnknown; }

    // INonDelegatingUnknown
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

  protected:
    std::atomic<LONG> m_cRef{0};

  private:
    // The IUnknown that the world sees of an object: a part of it that leads to the non-delegating methods.
    class Inner final : public IUnknown {
      public:
        explicit Inner(CUnknown& object) : m_object(object) {}
        STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override;
        STDMETHODIMP_(ULONG) AddRef() noexcept override;
        STDMETHODIMP_(ULONG) Release() noexcept override;

      private:
        CUnknown& m_object;
    };

    Inner m_inner;
    const LPUNKNOWN m_pUnknown; // not counted: the outer object owns this one
};

// Hands out a counted reference; the usual end of NonDelegatingQueryInterface.
HRESULT GetInterface(LPUNKNOWN pUnk, void** ppv) noexcept;

// IUnknown of a class that derives from CUnknown and from COM interfaces.
#define DECLARE_IUNKNOWN                                                                                               \
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override {                                           \
        return GetOwner()->QueryInterface(riid, ppv);                                                                  \
    }                                                                                                                  \
    STDMETHODIMP_(ULONG) AddRef() noexcept override {                                                                  \
        return GetOwner()->AddRef();                                                                                   \
    }                                                                                                                  \
    STDMETHODIMP_(ULONG) Release() noexcept override {                                                                 \
        return GetOwner()->Release();                                                                                  \
    }

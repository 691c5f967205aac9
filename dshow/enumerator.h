// CEnumerator: what the enumerators of the base classes share: references, and the rules of Next.
//
// Interface: the COM interface; Item: what it hands out pointers to.
// Owner: its references, counted from 1. Threads: one at a time, as its clients agree.
#pragma once

#include <atomic>

#include "dshow/com_guard.h"
#include "dshow/unknown.h"
#include "win/platform.h"

template <typename Interface, typename Item>
class CEnumerator : public Interface {
  public:
    CEnumerator(const CEnumerator&) = delete;
    CEnumerator& operator=(const CEnumerator&) = delete;
    virtual ~CEnumerator() = default;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) noexcept override {
        if (ppv == nullptr) {
            return E_POINTER;
        }
        *ppv = nullptr;
        return riid == IID_IUnknown || riid == m_iid ? GetInterface(this, ppv) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return static_cast<ULONG>(++m_cRef); }
    STDMETHODIMP_(ULONG) Release() noexcept override {
        const LONG left = --m_cRef;
        if (left == 0) {
            delete this;
        }
        return static_cast<ULONG>(left);
    }

    STDMETHODIMP Next(ULONG count, Item** items, ULONG* pcFetched) noexcept override {
        if (pcFetched != nullptr) {
            *pcFetched = 0;
        }
        if (items == nullptr) {
            return E_POINTER;
        }
        if (pcFetched == nullptr && count > 1) {
            return E_INVALIDARG; // the caller could not know how many there are
        }
        if (count > 0) {
            *items = nullptr;
        }
        ULONG fetched = 0;
        const HRESULT hr = ComGuard([&] { return Fetch(count, items, &fetched); });
        if (FAILED(hr)) {
            for (ULONG i = 0; i < fetched; ++i) {
                Free(items[i]);
                items[i] = nullptr;
            }
            return hr;
        }
        if (pcFetched != nullptr) {
            *pcFetched = fetched;
        }
        return fetched == count ? S_OK : S_FALSE;
    }

  protected:
    explicit CEnumerator(REFIID iid) : m_iid(iid) {}

  private:
    // Fewer than asked for at the end; those that were fetched before a failure are freed by the caller.
    virtual HRESULT Fetch(ULONG count, Item** items, ULONG* fetched) = 0;
    virtual void Free(Item* item) = 0;

    const IID m_iid;
    std::atomic<LONG> m_cRef{1};
};

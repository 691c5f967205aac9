// TestClock: a clock that stands where the test puts it.
//
// Units: 100 ns. Owner: the test; references are counted, none deletes it. Threads: one. Errors: as set.
#pragma once

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace dshow_test {

class TestClock final : public IReferenceClock {
  public:
    REFERENCE_TIME now = 0;
    HRESULT hr = S_OK;
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID, void**) noexcept override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_references.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return m_references.Release(); }
    // IReferenceClock
    STDMETHODIMP GetTime(REFERENCE_TIME* time) noexcept override {
        *time = now;
        return hr;
    }
    STDMETHODIMP AdviseTime(REFERENCE_TIME, REFERENCE_TIME, HEVENT, DWORD_PTR*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP AdvisePeriodic(REFERENCE_TIME, REFERENCE_TIME, HSEMAPHORE, DWORD_PTR*) noexcept override {
        return E_NOTIMPL;
    }
    STDMETHODIMP Unadvise(DWORD_PTR) noexcept override { return E_NOTIMPL; }

  private:
    test_support::ReferenceCount m_references{"a clock"};
};

} // namespace dshow_test

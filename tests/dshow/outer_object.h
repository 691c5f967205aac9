// OuterObject: aggregates one object, by hand as COM's rules say.
//
// Owner: the test; references are counted, none deletes it. Threads: one.
#pragma once

#include "tests/support/reference_count.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace dshow_test {

class OuterObject final : public IUnknown {
  public:
    void Aggregate(win::ComPtr<IUnknown> inner) { m_inner = std::move(inner); }
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        if (iid != IID_IUnknown) {
            return m_inner->QueryInterface(iid, object);
        }
        *object = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_references.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return m_references.Release(); }

  private:
    test_support::ReferenceCount m_references{"an outer object"};
    win::ComPtr<IUnknown> m_inner;
};

} // namespace dshow_test

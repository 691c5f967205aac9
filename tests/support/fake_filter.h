// FakeFilter: the filter around one fake pin, as much of it as a peer can ask for.
//
// Owner: the fake pin; references are counted, none deletes it. Threads: one. Errors: none.
#pragma once

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

class FakeFilter final : public IBaseFilter {
  public:
    explicit FakeFilter(IPin* pin) : m_pin(pin) {}
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IPersist
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* classId) override;
    // IMediaFilter
    HRESULT STDMETHODCALLTYPE Stop() override;
    HRESULT STDMETHODCALLTYPE Pause() override;
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME start) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* clock) override;
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** clock) override;
    // IBaseFilter
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** pins) override;
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR id, IPin** pin) override;
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* info) override;
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* vendorInfo) override;

  private:
    ReferenceCount m_references{"a fake filter"};
    IPin* const m_pin;               // not owned: it owns us
    IFilterGraph* m_graph = nullptr; // not owned, as for every filter
    FILTER_STATE m_state = State_Stopped;
};

} // namespace test_support

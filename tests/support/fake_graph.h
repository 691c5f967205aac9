// FakeGraph: a filter graph that only remembers which events filters sent to it.
//
// Owner: the test; references are counted, none deletes it (a filter holds none on its graph).
// Threads: Notify, Events and WaitForEvent any. Errors: all but the events is E_NOTIMPL.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

class FakeGraph final : public IFilterGraph, public IMediaEventSink {
  public:
    struct Event {
        LONG code; // EC_COMPLETE and the like
        LONG_PTR parameter1;
        LONG_PTR parameter2;
    };

    [[nodiscard]] std::vector<Event> Events() const;
    [[nodiscard]] int EventCount(LONG code) const;
    // Waits until an event of that code has arrived; false when the time is over.
    [[nodiscard]] bool WaitForEvent(LONG code, std::chrono::milliseconds timeout) const;
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IMediaEventSink
    HRESULT STDMETHODCALLTYPE Notify(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) override;
    // IFilterGraph
    HRESULT STDMETHODCALLTYPE AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Reconnect(IPin*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Disconnect(IPin*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaultSyncSource() override { return E_NOTIMPL; }

  private:
    ReferenceCount m_references{"a fake graph"};
    mutable std::mutex m_lock; // guards m_events
    mutable std::condition_variable m_changed;
    std::vector<Event> m_events;
};

} // namespace test_support

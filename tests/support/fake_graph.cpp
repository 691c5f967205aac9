#include "tests/support/fake_graph.h"

#include <algorithm>

#include "tests/support/system_code.h"

namespace test_support {

namespace {

int CountOf(const std::vector<FakeGraph::Event>& events, LONG code) {
    const auto isThat = [code](const FakeGraph::Event& event) { return event.code == code; };
    return static_cast<int>(std::count_if(events.begin(), events.end(), isThat));
}

} // namespace

std::vector<FakeGraph::Event> FakeGraph::Events() const {
    const std::lock_guard guard(m_lock);
    return m_events;
}

int FakeGraph::EventCount(LONG code) const {
    return CountOf(Events(), code);
}

bool FakeGraph::WaitForEvent(LONG code, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, timeout, [this, code] { return CountOf(m_events, code) > 0; });
}

HRESULT FakeGraph::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid == IID_IUnknown || iid == IID_IFilterGraph) {
        *object = static_cast<IFilterGraph*>(this);
    } else if (iid == IID_IMediaEventSink) {
        *object = static_cast<IMediaEventSink*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

HRESULT FakeGraph::Notify(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) {
    const SystemCode notTheProduct;
    const std::lock_guard guard(m_lock);
    m_events.push_back({code, parameter1, parameter2});
    m_changed.notify_all();
    return S_OK;
}

} // namespace test_support

// FakeUpstreamPin: the output pin of a small source filter, driven by the test.
//
// Units: times in 100 ns. Owner: the test; references are counted, none deletes it.
// Threads: connecting is for one thread; each delivery runs on its caller's thread.
// Errors: deliveries pass on the input pin's answer, VFW_E_NOT_CONNECTED without one.
#pragma once

#include "tests/support/fake_allocator.h"
#include "tests/support/fake_media_sample.h"
#include "tests/support/fake_pin.h"

namespace test_support {

class FakeUpstreamPin final : public FakePin {
  public:
    explicit FakeUpstreamPin(const MediaTypeValue& type);
    ~FakeUpstreamPin() { Unplug(); }

    // Connects with the pin's own type, as a graph does.
    [[nodiscard]] HRESULT ConnectTo(IPin* input) { return Connect(input, nullptr); }

    HRESULT Deliver(IMediaSample& sample);
    // A sample made for this one delivery.
    HRESULT Deliver(std::vector<BYTE> data, INT64 start, INT64 stop, bool syncPoint = true);
    HRESULT DeliverUntimed(std::vector<BYTE> data, bool syncPoint = true);
    HRESULT DeliverEndOfStream();
    HRESULT DeliverBeginFlush();
    HRESULT DeliverEndFlush();
    HRESULT DeliverNewSegment(INT64 start, INT64 stop, double rate = 1.0);

    // The input pin never hears of an allocator. Before connecting.
    void NotifyNoAllocator() { m_notifiesAllocator = false; }
    [[nodiscard]] IMemInputPin* Input() const { return m_input.Get(); } // null when not connected
    [[nodiscard]] FakeAllocator& Allocator() { return m_allocator; }

    // IPin
    HRESULT STDMETHODCALLTYPE Connect(IPin* receiver, const AM_MEDIA_TYPE* type) override;

  private:
    [[nodiscard]] IUnknown* FindInterface(REFIID iid) override;
    [[nodiscard]] HRESULT OnConnected() override;
    void OnDisconnected() override;

    bool m_notifiesAllocator = true;
    FakeAllocator m_allocator;
    win::ComPtr<IMemInputPin> m_input;
};

} // namespace test_support

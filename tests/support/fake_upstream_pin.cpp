#include "tests/support/fake_upstream_pin.h"

#include <utility>

namespace test_support {

FakeUpstreamPin::FakeUpstreamPin(const MediaTypeValue& type) : FakePin(PINDIR_OUTPUT, OLESTR("Upstream"), {type}) {}

IUnknown* FakeUpstreamPin::FindInterface(REFIID iid) {
    return iid == IID_IUnknown || iid == IID_IPin ? this : nullptr;
}

HRESULT FakeUpstreamPin::Connect(IPin* receiver, const AM_MEDIA_TYPE* type) {
    if (receiver == nullptr) {
        return E_POINTER;
    }
    if (Peer() != nullptr) {
        return VFW_E_ALREADY_CONNECTED;
    }
    const AM_MEDIA_TYPE& chosen = type != nullptr ? *type : Types().front().Get();
    const HRESULT received = receiver->ReceiveConnection(this, &chosen);
    if (FAILED(received)) {
        return received;
    }
    SetPeer(receiver, chosen);
    const HRESULT completed = OnConnected();
    if (FAILED(completed)) {
        Unplug();
    }
    return completed;
}

// The allocator is ours, whatever the input pin would offer.
HRESULT FakeUpstreamPin::OnConnected() {
    const HRESULT hr = Peer()->QueryInterface(IID_IMemInputPin, m_input.PutVoid());
    return FAILED(hr) || !m_notifiesAllocator ? hr : m_input->NotifyAllocator(&m_allocator, FALSE);
}

void FakeUpstreamPin::OnDisconnected() {
    m_input.Reset();
}

HRESULT FakeUpstreamPin::Deliver(IMediaSample& sample) {
    return m_input ? m_input->Receive(&sample) : VFW_E_NOT_CONNECTED;
}

HRESULT FakeUpstreamPin::Deliver(std::vector<BYTE> data, INT64 start, INT64 stop, bool syncPoint) {
    FakeMediaSample sample(std::move(data));
    return Deliver(sample.WithTimes(start, stop).WithSyncPoint(syncPoint));
}

HRESULT FakeUpstreamPin::DeliverUntimed(std::vector<BYTE> data, bool syncPoint) {
    FakeMediaSample sample(std::move(data));
    return Deliver(sample.WithSyncPoint(syncPoint));
}

HRESULT FakeUpstreamPin::DeliverEndOfStream() {
    return Peer() != nullptr ? Peer()->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT FakeUpstreamPin::DeliverBeginFlush() {
    return Peer() != nullptr ? Peer()->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT FakeUpstreamPin::DeliverEndFlush() {
    return Peer() != nullptr ? Peer()->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT FakeUpstreamPin::DeliverNewSegment(INT64 start, INT64 stop, double rate) {
    return Peer() != nullptr ? Peer()->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}

} // namespace test_support

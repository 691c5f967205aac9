#include "tests/support/fake_sink_pin.h"

namespace test_support {

FakeSinkPin::FakeSinkPin(StreamOffer offer)
    : FakePin(PINDIR_INPUT, OLESTR("Sink"), {}), m_offered(offer == StreamOffer::Offered ? &m_stream : nullptr) {}

FakeSinkPin::FakeSinkPin(IStream& stream) : FakePin(PINDIR_INPUT, OLESTR("Sink"), {}), m_offered(&stream) {}

IUnknown* FakeSinkPin::FindInterface(REFIID iid) {
    if (iid == IID_IUnknown || iid == IID_IPin) {
        return static_cast<IPin*>(this);
    }
    if (iid == IID_IMemInputPin) {
        return static_cast<IMemInputPin*>(this);
    }
    const bool stream = iid == IID_IStream || iid == IID_ISequentialStream;
    if (stream) {
        m_streamAsked();
    }
    return stream ? m_offered : nullptr;
}

HRESULT FakeSinkPin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr) {
        return E_POINTER;
    }
    if (Peer() != nullptr) {
        return VFW_E_ALREADY_CONNECTED;
    }
    if (QueryAccept(type) != S_OK) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }
    if (SUCCEEDED(m_connectionResult)) {
        SetPeer(connector, *type);
    }
    return m_connectionResult;
}

HRESULT FakeSinkPin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (type == nullptr) {
        return E_POINTER;
    }
    return type->majortype == MEDIATYPE_Stream ? S_OK : S_FALSE;
}

void FakeSinkPin::OnDisconnected() {
    m_notified.Reset();
}

void FakeSinkPin::CountOne(int Received::*counter) {
    const std::lock_guard guard(m_lock);
    ++(m_received.*counter);
    m_changed.notify_all();
}

FakeSinkPin::Received FakeSinkPin::Counts() const {
    const std::lock_guard guard(m_lock);
    return m_received;
}

bool FakeSinkPin::WaitForEndOfStream(std::chrono::milliseconds timeout, int count) const {
    std::unique_lock lock(m_lock);
    return m_changed.wait_for(lock, timeout, [this, count] { return m_received.endsOfStream >= count; });
}

HRESULT FakeSinkPin::EndOfStream() {
    m_ended();
    CountOne(&Received::endsOfStream);
    return S_OK;
}

HRESULT FakeSinkPin::BeginFlush() {
    CountOne(&Received::beginFlushes);
    return S_OK;
}

HRESULT FakeSinkPin::EndFlush() {
    CountOne(&Received::endFlushes);
    return S_OK;
}

HRESULT FakeSinkPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    CountOne(&Received::newSegments);
    return S_OK;
}

HRESULT FakeSinkPin::GetAllocator(IMemAllocator** allocator) {
    if (allocator == nullptr) {
        return E_POINTER;
    }
    *allocator = nullptr;
    if (!m_offersAllocator) {
        return VFW_E_NO_ALLOCATOR;
    }
    m_allocator.AddRef();
    *allocator = &m_allocator;
    return S_OK;
}

HRESULT FakeSinkPin::NotifyAllocator(IMemAllocator* allocator, BOOL) {
    if (allocator == nullptr) {
        return E_POINTER;
    }
    m_notified = allocator;
    return S_OK;
}

HRESULT FakeSinkPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    if (properties == nullptr) {
        return E_POINTER;
    }
    *properties = {};
    return E_NOTIMPL; // no wishes
}

HRESULT FakeSinkPin::Receive(IMediaSample*) {
    CountOne(&Received::samples);
    return S_OK;
}

HRESULT FakeSinkPin::ReceiveMultiple(IMediaSample**, LONG count, LONG* processed) {
    if (processed == nullptr) {
        return E_POINTER;
    }
    for (LONG i = 0; i < count; ++i) {
        CountOne(&Received::samples);
    }
    *processed = count;
    return S_OK;
}

} // namespace test_support

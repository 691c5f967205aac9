#include "bench/stream_sink_pin.h"

#include "bench/uncounted_section.h"

namespace bench {

IUnknown* StreamSinkPin::FindInterface(REFIID iid) {
    if (iid == IID_IUnknown || iid == IID_IPin) {
        return static_cast<IPin*>(this);
    }
    if (iid == IID_IMemInputPin) {
        return static_cast<IMemInputPin*>(this);
    }
    return iid == IID_IStream || iid == IID_ISequentialStream ? &m_stream : nullptr;
}

HRESULT StreamSinkPin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) {
    if (connector == nullptr || type == nullptr) {
        return E_POINTER;
    }
    if (Peer() != nullptr) {
        return VFW_E_ALREADY_CONNECTED;
    }
    if (QueryAccept(type) != S_OK) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }
    SetPeer(connector, *type);
    return S_OK;
}

HRESULT StreamSinkPin::QueryAccept(const AM_MEDIA_TYPE* type) {
    return type != nullptr && type->majortype == MEDIATYPE_Stream ? S_OK : S_FALSE;
}

HRESULT StreamSinkPin::GetAllocator(IMemAllocator** allocator) {
    if (allocator == nullptr) {
        return E_POINTER;
    }
    m_allocator.AddRef();
    *allocator = &m_allocator;
    return S_OK;
}

HRESULT StreamSinkPin::EndOfStream() {
    const UncountedSection uncounted;
    const std::lock_guard lock(m_lock);
    m_ended = true;
    m_changed.notify_all();
    return S_OK;
}

void StreamSinkPin::WaitForEndOfStream() {
    const UncountedSection uncounted;
    std::unique_lock lock(m_lock);
    m_changed.wait(lock, [this] { return m_ended; });
}

} // namespace bench

#include "sources/base/packet_allocator.h"

#include <algorithm>

#include "dshow/com_guard.h"

namespace source {

HRESULT PacketAllocator::QueryInterface(REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = iid == IID_IUnknown || iid == IID_IMemAllocator ? static_cast<IMemAllocator*>(this) : nullptr;
    if (*object == nullptr) {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG PacketAllocator::AddRef() noexcept {
    return ++m_references;
}

ULONG PacketAllocator::Release() noexcept {
    const ULONG left = --m_references;
    if (left == 0) {
        delete this; // a sample that is out holds a reference, so none is
    }
    return left;
}

HRESULT PacketAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) noexcept {
    if (request == nullptr || actual == nullptr) {
        return E_POINTER;
    }
    const LONG align = request->cbAlign;
    if (align < 1 || align > LONG{__STDCPP_DEFAULT_NEW_ALIGNMENT__} || (align & (align - 1)) != 0 ||
        request->cbPrefix != 0) {
        return VFW_E_BADALIGN;
    }
    if (request->cBuffers < 1 || request->cbBuffer < 1) {
        return E_INVALIDARG;
    }
    const win::LockGuard lock(m_lock);
    if (m_isCommitted) {
        return VFW_E_ALREADY_COMMITTED;
    }
    if (IsOut()) {
        return VFW_E_BUFFERS_OUTSTANDING;
    }
    m_properties = *request;
    *actual = m_properties;
    return S_OK;
}

HRESULT PacketAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) noexcept {
    if (properties == nullptr) {
        return E_POINTER;
    }
    const win::LockGuard lock(m_lock);
    *properties = m_properties;
    return S_OK;
}

// Where buffers are still out from before, those of that time serve on.
HRESULT PacketAllocator::Commit() noexcept {
    return ComGuard([this] {
        const win::LockGuard lock(m_lock);
        if (m_properties.cBuffers == 0) {
            return static_cast<HRESULT>(VFW_E_SIZENOTSET);
        }
        const auto count = static_cast<size_t>(m_properties.cBuffers);
        m_free.reserve(count);
        m_samples.reserve(count);
        while (m_samples.size() < count) {
            m_samples.push_back(std::make_unique<PacketSample>(*this));
            m_free.push_back(m_samples.back().get());
        }
        m_isCommitted = true;
        return S_OK;
    });
}

HRESULT PacketAllocator::Decommit() noexcept {
    const win::LockGuard lock(m_lock);
    m_isCommitted = false;
    if (!IsOut()) {
        FreeSamples();
    }
    m_changed.WakeAll();
    return S_OK;
}

HRESULT PacketAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* /*start*/, REFERENCE_TIME* /*stop*/,
                                   DWORD flags) noexcept {
    if (sample == nullptr) {
        return E_POINTER;
    }
    PacketSample* taken = nullptr;
    const HRESULT hr = Take(flags, taken);
    *sample = taken;
    return hr;
}

HRESULT PacketAllocator::GetSample(PacketSample** sample) {
    return Take(0, *sample);
}

// The one that came back last, whose bytes are in the processor's cache.
HRESULT PacketAllocator::Take(DWORD flags, PacketSample*& sample) {
    sample = nullptr;
    const win::LockGuard lock(m_lock);
    while (m_isCommitted && m_free.empty()) {
        if ((flags & AM_GBF_NOWAIT) != 0) {
            return VFW_E_TIMEOUT;
        }
        m_changed.Sleep(m_lock, INFINITE);
    }
    if (!m_isCommitted) {
        return VFW_E_NOT_COMMITTED;
    }
    sample = m_free.back();
    m_free.pop_back();
    sample->LendOut(m_properties.cbBuffer);
    AddRef();
    return S_OK;
}

HRESULT PacketAllocator::ReleaseBuffer(IMediaSample* /*sample*/) noexcept {
    return E_UNEXPECTED;
}

void PacketAllocator::TakeBack(PacketSample& sample) noexcept {
    {
        const win::LockGuard lock(m_lock);
        m_free.push_back(&sample);
        if (!m_isCommitted && !IsOut()) {
            FreeSamples();
        }
        m_changed.WakeAll();
    }
    Release(); // the sample's
}

void PacketAllocator::FreeSamples() {
    m_free.clear();
    m_samples.clear();
}

} // namespace source

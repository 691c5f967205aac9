#include "sources/base/packet_allocator.h"

#include <algorithm>

#include "dshow/com_guard.h"

namespace source {

HRESULT CPacketAllocator::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (iid == IID_IMemAllocator) {
        return GetInterface(static_cast<IMemAllocator*>(this), object);
    }
    return CUnknown::NonDelegatingQueryInterface(iid, object);
}

HRESULT CPacketAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) noexcept {
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

HRESULT CPacketAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) noexcept {
    if (properties == nullptr) {
        return E_POINTER;
    }
    const win::LockGuard lock(m_lock);
    *properties = m_properties;
    return S_OK;
}

// Where buffers are still out from before, those of that time serve on.
HRESULT CPacketAllocator::Commit() noexcept {
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

HRESULT CPacketAllocator::Decommit() noexcept {
    const win::LockGuard lock(m_lock);
    m_isCommitted = false;
    if (!IsOut()) {
        FreeSamples();
    }
    m_changed.WakeAll();
    return S_OK;
}

HRESULT CPacketAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* /*start*/, REFERENCE_TIME* /*stop*/,
                                    DWORD flags) noexcept {
    if (sample == nullptr) {
        return E_POINTER;
    }
    PacketSample* taken = nullptr;
    const HRESULT hr = Take(flags, taken);
    *sample = taken;
    return hr;
}

HRESULT CPacketAllocator::GetSample(PacketSample** sample) {
    return Take(0, *sample);
}

// The one that came back last, whose bytes are in the processor's cache.
HRESULT CPacketAllocator::Take(DWORD flags, PacketSample*& sample) {
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

HRESULT CPacketAllocator::ReleaseBuffer(IMediaSample* /*sample*/) noexcept {
    return E_UNEXPECTED;
}

void CPacketAllocator::TakeBack(PacketSample& sample) noexcept {
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

void CPacketAllocator::FreeSamples() {
    m_free.clear();
    m_samples.clear();
}

} // namespace source

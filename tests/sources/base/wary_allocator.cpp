#include "tests/sources/base/wary_allocator.h"

#include <algorithm>

#include "dshow/memory_allocator.h"

namespace test_source {

namespace {

constexpr size_t kBytesBehind = size_t{1} << 20;
constexpr BYTE kUntouched = 0xEE;

} // namespace

WaryAllocator::WaryAllocator() {
    (void)CreateMemoryAllocator(m_inner.Put());
}

void WaryAllocator::PromiseAbove(LONG bytes) {
    m_real = bytes;
    m_narrowSample.emplace(std::vector<BYTE>(static_cast<size_t>(bytes) + kBytesBehind, kUntouched));
    m_narrowSample->WithClaimedSize(bytes);
}

bool WaryAllocator::WroteBehindTheSize() {
    BYTE* bytes = nullptr;
    (void)m_narrowSample->GetPointer(&bytes);
    const BYTE* const behind = bytes + m_real;
    return std::any_of(behind, behind + kBytesBehind, [](BYTE byte) { return byte != kUntouched; });
}

HRESULT WaryAllocator::QueryInterface(REFIID iid, void** object) {
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

HRESULT WaryAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    if (request->cbBuffer > m_most) {
        return E_OUTOFMEMORY;
    }
    ALLOCATOR_PROPERTIES real = *request;
    real.cbBuffer = std::min(real.cbBuffer, m_real);
    const HRESULT hr = m_inner->SetProperties(&real, actual);
    if (SUCCEEDED(hr)) {
        actual->cbBuffer = std::max(actual->cbBuffer, request->cbBuffer);
        m_largestPool = std::max<LONGLONG>(m_largestPool, LONGLONG{actual->cbBuffer} * actual->cBuffers);
    }
    return hr;
}

HRESULT WaryAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop, DWORD flags) {
    if (!m_narrowSample) {
        return m_inner->GetBuffer(sample, start, stop, flags);
    }
    *sample = &*m_narrowSample;
    (*sample)->AddRef();
    return S_OK;
}

HRESULT WaryAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    return m_inner->GetProperties(properties);
}

} // namespace test_source

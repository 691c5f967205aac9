#include "tests/sources/base/wary_allocator.h"

#include <algorithm>

#include "dshow/memory_allocator.h"

namespace test_source {

WaryAllocator::WaryAllocator() {
    (void)CreateMemoryAllocator(m_inner.Put());
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

HRESULT WaryAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    return m_inner->GetProperties(properties);
}

} // namespace test_source

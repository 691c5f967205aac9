#include "tests/support/fake_allocator.h"

namespace test_support {

HRESULT FakeAllocator::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IMemAllocator) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IMemAllocator*>(this);
    AddRef();
    return S_OK;
}

HRESULT FakeAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    if (request == nullptr || actual == nullptr) {
        return E_POINTER;
    }
    *actual = {};
    m_requested = *request;
    if (FAILED(m_setPropertiesResult)) {
        return m_setPropertiesResult;
    }
    m_current = m_granted.value_or(*request);
    *actual = m_current;
    return S_OK;
}

HRESULT FakeAllocator::GetProperties(ALLOCATOR_PROPERTIES* properties) {
    if (properties == nullptr) {
        return E_POINTER;
    }
    *properties = m_current;
    return S_OK;
}

HRESULT FakeAllocator::Commit() {
    m_committed = true;
    return S_OK;
}

HRESULT FakeAllocator::Decommit() {
    m_committed = false;
    return S_OK;
}

HRESULT FakeAllocator::GetBuffer(IMediaSample** sample, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) {
    if (sample == nullptr) {
        return E_POINTER;
    }
    *sample = nullptr;
    return m_committed ? VFW_E_TIMEOUT : VFW_E_NOT_COMMITTED; // there are no buffers
}

HRESULT FakeAllocator::ReleaseBuffer(IMediaSample*) {
    return E_NOTIMPL;
}

} // namespace test_support

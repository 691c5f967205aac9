#include "tests/mkvmux/stub_muxer.h"

#include <algorithm>

namespace test_mkvmux {

namespace {

constexpr LONG kBufferBytes = 4096;

} // namespace

StubInputPin::StubInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, std::vector<GUID> majorTypes)
    : CBaseInputPin(L"StubInput", filter, lock, phr, L"In 0"), m_majorTypes(std::move(majorTypes)) {}

HRESULT StubInputPin::CheckMediaType(const CMediaType* type) {
    const bool known = std::find(m_majorTypes.begin(), m_majorTypes.end(), *type->Type()) != m_majorTypes.end();
    return known ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

StubOutputPin::StubOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseOutputPin(L"StubOutput", filter, lock, phr, L"Out") {}

HRESULT StubOutputPin::CheckMediaType(const CMediaType* type) {
    return *type->Type() == MEDIATYPE_Stream ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

HRESULT StubOutputPin::GetMediaType(int position, CMediaType* type) {
    if (position > 0) {
        return VFW_S_NO_MORE_ITEMS;
    }
    type->SetType(&MEDIATYPE_Stream);
    return S_OK;
}

HRESULT StubOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    request->cBuffers = 1;
    request->cbBuffer = kBufferBytes;
    request->cbAlign = 1;
    ALLOCATOR_PROPERTIES actual{};
    return allocator->SetProperties(request, &actual);
}

StubMuxer::StubMuxer(std::vector<GUID> majorTypes, HRESULT* phr)
    : CBaseFilter(L"StubMuxer", nullptr, &m_lock, CLSID_NULL), m_output(this, &m_lock, phr),
      m_input(this, &m_lock, phr, std::move(majorTypes)) {}

CBasePin* StubMuxer::GetPin(int index) {
    switch (index) {
    case 0:
        return &m_output;
    case 1:
        return &m_input;
    default:
        return nullptr;
    }
}

win::ComPtr<IBaseFilter> MakeStubMuxer(std::vector<GUID> majorTypes) {
    HRESULT hr = S_OK;
    return win::ComPtr<IBaseFilter>(new StubMuxer(std::move(majorTypes), &hr));
}

} // namespace test_mkvmux

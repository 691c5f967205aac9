#include "tests/dshow/test_filter.h"

namespace dshow_test {

HRESULT TestOutputPin::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) {
    wishes.push_back(*request);
    request->cBuffers = 3;
    request->cbBuffer = 1000;
    ALLOCATOR_PROPERTIES actual{};
    return allocator->SetProperties(request, &actual);
}

HRESULT TestOutputPin::InitAllocator(IMemAllocator** allocator) {
    *allocator = nullptr;
    if (FAILED(initAllocator)) {
        return initAllocator;
    }
    return ownAllocator.QueryInterface(IID_IMemAllocator, reinterpret_cast<void**>(allocator));
}

TestFilter::TestFilter(IUnknown* outer) : CBaseFilter(OLESTR("test filter"), outer, &m_lock, kClassId) {}

TestFilter::~TestFilter() = default;

TestInputPin& TestFilter::AddInput(const WCHAR* name) {
    HRESULT hr = S_OK;
    auto pin = std::make_unique<TestInputPin>(OLESTR("test input"), this, &m_lock, &hr, name);
    TestInputPin& added = *pin;
    m_pins.push_back(std::move(pin));
    IncrementPinVersion();
    return added;
}

TestOutputPin& TestFilter::AddOutput(const WCHAR* name) {
    HRESULT hr = S_OK;
    auto pin = std::make_unique<TestOutputPin>(OLESTR("test output"), this, &m_lock, &hr, name);
    TestOutputPin& added = *pin;
    m_pins.push_back(std::move(pin));
    IncrementPinVersion();
    return added;
}

CBasePin* TestFilter::GetPin(int n) {
    if (throwOnGetPin) {
        throw "TestFilter::GetPin";
    }
    const auto index = static_cast<size_t>(n);
    return n >= 0 && index < m_pins.size() ? m_pins[index].get() : nullptr;
}

CMediaType TypeWithTag(BYTE tag) {
    CMediaType type(&MEDIATYPE_Video);
    type.SetSubtype(&MEDIASUBTYPE_RGB24);
    type.SetFormatType(&FORMAT_VideoInfo);
    type.SetFormat(&tag, 1);
    return type;
}

CMediaType StreamType() {
    CMediaType type = TypeWithTag(0);
    type.SetType(&MEDIATYPE_Stream);
    return type;
}

BYTE TagOf(const CMediaType& type) {
    return type.FormatLength() == 1 ? *type.Format() : BYTE{0};
}

} // namespace dshow_test

#include "mkvmux/file_sink_filter.h"

#include <mutex>

#include "mkvmux/failure.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// Of this program's own filter; it is registered nowhere. {70C7A4E2-9D38-4B15-8F6C-2E51D0B7A983}
constexpr GUID kFileSinkClassId{0x70c7a4e2, 0x9d38, 0x4b15, {0x8f, 0x6c, 0x2e, 0x51, 0xd0, 0xb7, 0xa9, 0x83}};

} // namespace

CFileSinkPin::CFileSinkPin(CFileSinkFilter* filter, CCritSec* lock, HRESULT* phr)
    : CBaseInputPin(L"FileSinkPin", filter, lock, phr, L"In"), m_sink(filter), m_stream(GetOwner()) {}

STDMETHODIMP CFileSinkPin::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (iid == IID_IStream || iid == IID_ISequentialStream) {
        return m_stream.NonDelegatingQueryInterface(iid, object);
    }
    return CBaseInputPin::NonDelegatingQueryInterface(iid, object);
}

HRESULT CFileSinkPin::CheckMediaType(const CMediaType* type) {
    return *type->Type() == MEDIATYPE_Stream ? S_OK : VFW_E_TYPE_NOT_ACCEPTED;
}

STDMETHODIMP CFileSinkPin::Receive(IMediaSample*) noexcept {
    return E_UNEXPECTED; // whoever delivers samples does not know where in the file they belong
}

STDMETHODIMP CFileSinkPin::EndOfStream() noexcept {
    const HRESULT hr = CheckStreaming();
    if (hr == S_OK) {
        m_sink->OnEndOfStream();
    }
    return hr;
}

win::ComPtr<CFileSinkFilter> CFileSinkFilter::Make() {
    HRESULT hr = S_OK;
    win::ComPtr<CFileSinkFilter> filter(new CFileSinkFilter(nullptr, &hr));
    if (FAILED(hr)) {
        throw Failure("the file sink cannot be created: " + DescribeResult(hr));
    }
    return filter;
}

CUnknown* CFileSinkFilter::CreateInstance(LPUNKNOWN outer, HRESULT* phr) {
    return new CFileSinkFilter(outer, phr);
}

CFileSinkFilter::CFileSinkFilter(LPUNKNOWN outer, HRESULT* phr)
    : CBaseFilter(L"FileSink", outer, &m_lock, kFileSinkClassId), m_pin(this, &m_lock, phr) {
    m_pin.Stream().SetFailureHandler([this](HRESULT failure) { NotifyEvent(EC_ERRORABORT, failure, 0); });
}

HRESULT CFileSinkFilter::CreateFileOnDisk(const std::wstring& path, bool overwrite) {
    return m_pin.Stream().Create(path, overwrite);
}

STDMETHODIMP CFileSinkFilter::NonDelegatingQueryInterface(REFIID iid, void** object) {
    if (iid == IID_IFileSinkFilter) {
        return GetInterface(static_cast<IFileSinkFilter*>(this), object);
    }
    if (iid == IID_IAMFilterMiscFlags) {
        return GetInterface(static_cast<IAMFilterMiscFlags*>(this), object);
    }
    return CBaseFilter::NonDelegatingQueryInterface(iid, object);
}

STDMETHODIMP CFileSinkFilter::SetFileName(LPCOLESTR name, const AM_MEDIA_TYPE* /*type*/) noexcept {
    return name == nullptr ? E_POINTER : CreateFileOnDisk(name, true);
}

STDMETHODIMP CFileSinkFilter::GetCurFile(LPOLESTR* name, AM_MEDIA_TYPE* type) noexcept {
    if (name == nullptr) {
        return E_POINTER;
    }
    if (type != nullptr) {
        *type = {};
    }
    STATSTG file{};
    const HRESULT hr = m_pin.Stream().Stat(&file, STATFLAG_DEFAULT);
    *name = file.pwcsName;
    return hr;
}

int CFileSinkFilter::GetPinCount() {
    return 1;
}

CBasePin* CFileSinkFilter::GetPin(int index) {
    return index == 0 ? &m_pin : nullptr;
}

// The graph expects EC_COMPLETE of a running renderer; an end that comes earlier waits for Run.
void CFileSinkFilter::OnEndOfStream() {
    const win::LockGuard lock(m_lock);
    m_endOfStream = true;
    if (m_State == State_Running) {
        NotifyComplete();
    }
}

STDMETHODIMP CFileSinkFilter::Run(REFERENCE_TIME start) noexcept {
    const win::LockGuard lock(m_lock);
    const bool wasRunning = m_State == State_Running;
    const HRESULT hr = CBaseFilter::Run(start);
    if (SUCCEEDED(hr) && !wasRunning && m_endOfStream) {
        NotifyComplete();
    }
    return hr;
}

STDMETHODIMP CFileSinkFilter::Stop() noexcept {
    const win::LockGuard lock(m_lock);
    m_endOfStream = false;
    return CBaseFilter::Stop();
}

void CFileSinkFilter::NotifyComplete() {
    NotifyEvent(EC_COMPLETE, S_OK, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this)));
}

} // namespace mkvmux

// The parameter interface of the filter: no parameter is answered yet.
#include "matroska_muxer/matroska_muxer.h"

HRESULT CMatroskaMuxer::SetValue(const GUID* /*key*/, const VARIANT* /*value*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::GetValue(const GUID* /*key*/, VARIANT* /*value*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::DescribeValue(const GUID* /*key*/, IUnknown** description) noexcept {
    if (description != nullptr) {
        *description = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::IsSupported(const GUID* /*key*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::SetDefaults() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::EnumValues(LONG* count, GUID** keys) noexcept {
    if (count != nullptr) {
        *count = 0;
    }
    if (keys != nullptr) {
        *keys = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::CommitChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::DeclineChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::SaveToRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::LoadFromRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::Advise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CMatroskaMuxer::Unadvise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}

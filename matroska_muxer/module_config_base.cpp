#include "matroska_muxer/module_config_base.h"

HRESULT CModuleConfigBase::DescribeValue(const GUID* /*key*/, IUnknown** description) noexcept {
    if (description != nullptr) {
        *description = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::IsSupported(const GUID* /*key*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::SetDefaults() noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::EnumValues(LONG* count, GUID** keys) noexcept {
    if (count != nullptr) {
        *count = 0;
    }
    if (keys != nullptr) {
        *keys = nullptr;
    }
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::CommitChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::DeclineChanges() noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::SaveToRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::LoadFromRegistry(HKEY /*root*/, BSTR /*path*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::Advise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}

HRESULT CModuleConfigBase::Unadvise(IUnknown* /*sink*/) noexcept {
    return E_NOTIMPL;
}

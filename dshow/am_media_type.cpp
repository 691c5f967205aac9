#include "dshow/am_media_type.h"

#include <cstring>

HRESULT CopyMediaType(AM_MEDIA_TYPE* pmtTarget, const AM_MEDIA_TYPE* pmtSource) noexcept {
    if (pmtTarget == nullptr || pmtSource == nullptr) {
        return E_POINTER;
    }
    *pmtTarget = *pmtSource;
    pmtTarget->pbFormat = nullptr;
    pmtTarget->cbFormat = 0;
    pmtTarget->pUnk = nullptr;
    if (pmtSource->cbFormat != 0 && pmtSource->pbFormat != nullptr) {
        pmtTarget->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(pmtSource->cbFormat));
        if (pmtTarget->pbFormat == nullptr) {
            return E_OUTOFMEMORY;
        }
        pmtTarget->cbFormat = pmtSource->cbFormat;
        std::memcpy(pmtTarget->pbFormat, pmtSource->pbFormat, pmtSource->cbFormat);
    }
    if (pmtSource->pUnk != nullptr) {
        pmtTarget->pUnk = pmtSource->pUnk;
        pmtTarget->pUnk->AddRef();
    }
    return S_OK;
}

void FreeMediaType(AM_MEDIA_TYPE& mt) noexcept {
    if (mt.cbFormat != 0) {
        CoTaskMemFree(mt.pbFormat);
    }
    mt.cbFormat = 0;
    mt.pbFormat = nullptr;
    if (mt.pUnk != nullptr) {
        mt.pUnk->Release();
        mt.pUnk = nullptr;
    }
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* pSrc) noexcept {
    auto* const copy = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (copy != nullptr && FAILED(CopyMediaType(copy, pSrc))) {
        CoTaskMemFree(copy);
        return nullptr;
    }
    return copy;
}

void DeleteMediaType(AM_MEDIA_TYPE* pmt) noexcept {
    if (pmt != nullptr) {
        FreeMediaType(*pmt);
        CoTaskMemFree(pmt);
    }
}

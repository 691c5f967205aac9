#include "dshow/media_type.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "dshow/am_media_type.h"

namespace {

bool SameBytes(const BYTE* left, const BYTE* right, ULONG length) {
    return length == 0 || std::memcmp(left, right, length) == 0;
}

bool MatchesOrAny(const GUID& value, const GUID& partial) {
    return partial == GUID_NULL || partial == value;
}

AM_MEDIA_TYPE EmptyType() {
    AM_MEDIA_TYPE type{};
    type.lSampleSize = 1;
    type.bFixedSizeSamples = TRUE;
    return type;
}

} // namespace

CMediaType::CMediaType() : AM_MEDIA_TYPE(EmptyType()) {}

CMediaType::CMediaType(const GUID* type) : CMediaType() {
    majortype = *type;
}

CMediaType::CMediaType(const AM_MEDIA_TYPE& mtype, HRESULT* phr) : CMediaType() {
    const HRESULT hr = Set(mtype);
    if (FAILED(hr)) {
        if (phr == nullptr) {
            throw std::bad_alloc();
        }
        *phr = hr;
    }
}

CMediaType::CMediaType(const CMediaType& cmtype, HRESULT* phr)
    : CMediaType(static_cast<const AM_MEDIA_TYPE&>(cmtype), phr) {}

CMediaType::CMediaType(CMediaType&& other) noexcept : CMediaType() {
    *this = std::move(other);
}

CMediaType::~CMediaType() {
    FreeMediaType(*this);
}

CMediaType& CMediaType::operator=(const CMediaType& other) {
    return *this = static_cast<const AM_MEDIA_TYPE&>(other);
}

CMediaType& CMediaType::operator=(const AM_MEDIA_TYPE& other) {
    if (FAILED(Set(other))) {
        throw std::bad_alloc();
    }
    return *this;
}

CMediaType& CMediaType::operator=(CMediaType&& other) noexcept {
    std::swap(static_cast<AM_MEDIA_TYPE&>(*this), static_cast<AM_MEDIA_TYPE&>(other));
    return *this;
}

BOOL CMediaType::operator==(const CMediaType& other) const {
    return majortype == other.majortype && subtype == other.subtype && formattype == other.formattype &&
           cbFormat == other.cbFormat && SameBytes(pbFormat, other.pbFormat, cbFormat);
}

HRESULT CMediaType::Set(const CMediaType& other) noexcept {
    return Set(static_cast<const AM_MEDIA_TYPE&>(other));
}

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& other) noexcept {
    if (&other == this) {
        return S_OK;
    }
    AM_MEDIA_TYPE copy;
    const HRESULT hr = CopyMediaType(&copy, &other);
    if (SUCCEEDED(hr)) {
        FreeMediaType(*this);
        static_cast<AM_MEDIA_TYPE&>(*this) = copy;
    }
    return hr;
}

void CMediaType::SetSampleSize(ULONG size) {
    if (size == 0) {
        SetVariableSize();
        return;
    }
    bFixedSizeSamples = TRUE;
    lSampleSize = size;
}

BOOL CMediaType::SetFormat(const BYTE* format, ULONG length) {
    if (AllocFormatBuffer(length) == nullptr) {
        return length == 0;
    }
    std::memcpy(pbFormat, format, length);
    return TRUE;
}

void CMediaType::ResetFormatBuffer() {
    if (cbFormat != 0) {
        CoTaskMemFree(pbFormat);
    }
    cbFormat = 0;
    pbFormat = nullptr;
}

BYTE* CMediaType::AllocFormatBuffer(ULONG length) {
    return ResizeFormatBuffer(length, 0);
}

BYTE* CMediaType::ReallocFormatBuffer(ULONG length) {
    return ResizeFormatBuffer(length, std::min(cbFormat, length));
}

BYTE* CMediaType::ResizeFormatBuffer(ULONG length, ULONG kept) {
    if (length == 0) {
        ResetFormatBuffer();
        return nullptr;
    }
    if (length == cbFormat) {
        return pbFormat;
    }
    auto* const block = static_cast<BYTE*>(CoTaskMemAlloc(length));
    if (block == nullptr) {
        return nullptr;
    }
    if (kept != 0) {
        std::memcpy(block, pbFormat, kept);
    }
    ResetFormatBuffer();
    cbFormat = length;
    pbFormat = block;
    return block;
}

void CMediaType::InitMediaType() {
    FreeMediaType(*this);
    static_cast<AM_MEDIA_TYPE&>(*this) = EmptyType();
}

BOOL CMediaType::MatchesPartial(const CMediaType* ppartial) const {
    if (!MatchesOrAny(majortype, ppartial->majortype) || !MatchesOrAny(subtype, ppartial->subtype)) {
        return FALSE;
    }
    if (ppartial->formattype == GUID_NULL) {
        return TRUE;
    }
    return formattype == ppartial->formattype && cbFormat == ppartial->cbFormat &&
           SameBytes(pbFormat, ppartial->pbFormat, cbFormat);
}

#include "tests/support/media_type_value.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace test_support {

MediaTypeValue::MediaTypeValue(const GUID& majorType, const GUID& subtype, const GUID& formatType,
                               std::span<const BYTE> format) {
    m_type.majortype = majorType;
    m_type.subtype = subtype;
    m_type.formattype = formatType;
    m_type.bFixedSizeSamples = FALSE;
    m_type.bTemporalCompression = FALSE;
    SetFormat(format);
}

MediaTypeValue::MediaTypeValue(const AM_MEDIA_TYPE& type) : m_type(type) {
    m_type.pUnk = nullptr;
    SetFormat({type.pbFormat, type.pbFormat == nullptr ? 0 : type.cbFormat});
}

MediaTypeValue::MediaTypeValue(MediaTypeValue&& other) noexcept
    : m_type(std::exchange(other.m_type, {})), m_format(std::move(other.m_format)) {}

MediaTypeValue& MediaTypeValue::operator=(MediaTypeValue other) noexcept {
    std::swap(m_type, other.m_type);
    std::swap(m_format, other.m_format);
    return *this;
}

void MediaTypeValue::SetFormat(std::span<const BYTE> format) {
    std::unique_ptr<BYTE[]> copy;
    if (!format.empty()) {
        copy = std::make_unique<BYTE[]>(format.size());
        std::copy(format.begin(), format.end(), copy.get());
    }
    m_format = std::move(copy);
    m_type.pbFormat = m_format.get();
    m_type.cbFormat = static_cast<ULONG>(format.size());
}

MediaTypeValue MediaTypeValue::CutTo(size_t bytes) const {
    MediaTypeValue cut(*this);
    cut.SetFormat(Format().first(std::min(bytes, Format().size())));
    return cut;
}

std::span<const BYTE> MediaTypeValue::Format() const {
    return {m_type.pbFormat, m_type.cbFormat};
}

HRESULT CopyToTaskMemory(const AM_MEDIA_TYPE& from, AM_MEDIA_TYPE* to) {
    *to = from;
    to->pUnk = nullptr;
    to->pbFormat = nullptr;
    to->cbFormat = 0;
    if (from.cbFormat == 0 || from.pbFormat == nullptr) {
        return S_OK;
    }
    to->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(from.cbFormat));
    if (to->pbFormat == nullptr) {
        return E_OUTOFMEMORY;
    }
    std::memcpy(to->pbFormat, from.pbFormat, from.cbFormat);
    to->cbFormat = from.cbFormat;
    return S_OK;
}

void FreeTaskMemoryFormat(AM_MEDIA_TYPE& type) {
    CoTaskMemFree(std::exchange(type.pbFormat, nullptr));
    type.cbFormat = 0;
}

bool SameMediaType(const AM_MEDIA_TYPE& left, const AM_MEDIA_TYPE& right) {
    return left.majortype == right.majortype && left.subtype == right.subtype && left.formattype == right.formattype &&
           left.cbFormat == right.cbFormat &&
           (left.cbFormat == 0 || std::memcmp(left.pbFormat, right.pbFormat, left.cbFormat) == 0);
}

} // namespace test_support

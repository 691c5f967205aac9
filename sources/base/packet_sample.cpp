#include "sources/base/packet_sample.h"

#include "dshow/am_media_type.h"
#include "dshow/com_guard.h"

namespace source {

void PacketSample::LendOut(LONG bytes) {
    m_references = 1;
    m_size = bytes;
    m_length = bytes;
    m_hasStart = false;
    m_hasStop = false;
    m_hasMediaTime = false;
    m_isSyncPoint = false;
    m_isPreroll = false;
    m_isDiscontinuity = false;
    m_hasType = false;
}

void PacketSample::Exchange(std::vector<BYTE>& packet) {
    if (!packet.empty()) {
        m_bytes.swap(packet);
        m_size = static_cast<LONG>(m_bytes.size());
    }
}

HRESULT PacketSample::QueryInterface(REFIID iid, void** object) noexcept {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = iid == IID_IUnknown || iid == IID_IMediaSample ? static_cast<IMediaSample*>(this) : nullptr;
    if (*object == nullptr) {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG PacketSample::AddRef() noexcept {
    return ++m_references;
}

ULONG PacketSample::Release() noexcept {
    const ULONG left = --m_references;
    if (left == 0) {
        m_home.TakeBack(*this); // there may be no sample behind this
    }
    return left;
}

HRESULT PacketSample::GetPointer(BYTE** buffer) noexcept {
    if (buffer == nullptr) {
        return E_POINTER;
    }
    *buffer = nullptr;
    return ComGuard([&] {
        if (m_bytes.size() < static_cast<size_t>(m_size)) {
            m_bytes.resize(static_cast<size_t>(m_size));
        }
        *buffer = m_bytes.data();
        return S_OK;
    });
}

HRESULT PacketSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) noexcept {
    if (start == nullptr || stop == nullptr) {
        return E_POINTER;
    }
    if (!m_hasStart) {
        return VFW_E_SAMPLE_TIME_NOT_SET;
    }
    *start = m_start;
    *stop = m_hasStop ? m_stop : m_start + 1;
    return m_hasStop ? S_OK : VFW_S_NO_STOP_TIME;
}

HRESULT PacketSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) noexcept {
    m_hasStart = start != nullptr;
    m_hasStop = m_hasStart && stop != nullptr;
    m_start = m_hasStart ? *start : 0;
    m_stop = m_hasStop ? *stop : 0;
    return S_OK;
}

HRESULT PacketSample::SetSyncPoint(BOOL isSyncPoint) noexcept {
    m_isSyncPoint = isSyncPoint != FALSE;
    return S_OK;
}

HRESULT PacketSample::SetPreroll(BOOL isPreroll) noexcept {
    m_isPreroll = isPreroll != FALSE;
    return S_OK;
}

HRESULT PacketSample::SetActualDataLength(LONG length) noexcept {
    if (length < 0 || length > m_size) {
        return VFW_E_BUFFER_OVERFLOW;
    }
    m_length = length;
    return S_OK;
}

// None stands for the type that the pins agreed on.
HRESULT PacketSample::GetMediaType(AM_MEDIA_TYPE** type) noexcept {
    if (type == nullptr) {
        return E_POINTER;
    }
    *type = m_hasType ? CreateMediaType(&m_type) : nullptr;
    return m_hasType ? (*type != nullptr ? S_OK : E_OUTOFMEMORY) : S_FALSE;
}

HRESULT PacketSample::SetMediaType(AM_MEDIA_TYPE* type) noexcept {
    m_hasType = false;
    if (type == nullptr) {
        return S_OK;
    }
    const HRESULT hr = m_type.Set(*type);
    m_hasType = SUCCEEDED(hr);
    return hr;
}

HRESULT PacketSample::SetDiscontinuity(BOOL isDiscontinuity) noexcept {
    m_isDiscontinuity = isDiscontinuity != FALSE;
    return S_OK;
}

HRESULT PacketSample::GetMediaTime(LONGLONG* start, LONGLONG* stop) noexcept {
    if (start == nullptr || stop == nullptr) {
        return E_POINTER;
    }
    if (!m_hasMediaTime) {
        return VFW_E_MEDIA_TIME_NOT_SET;
    }
    *start = m_mediaStart;
    *stop = m_mediaStop;
    return S_OK;
}

HRESULT PacketSample::SetMediaTime(LONGLONG* start, LONGLONG* stop) noexcept {
    m_hasMediaTime = start != nullptr && stop != nullptr;
    if (m_hasMediaTime) {
        m_mediaStart = *start;
        m_mediaStop = *stop;
    }
    return start == nullptr || stop != nullptr ? S_OK : E_POINTER;
}

} // namespace source

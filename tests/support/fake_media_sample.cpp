#include "tests/support/fake_media_sample.h"

#include <limits>

namespace test_support {

FakeMediaSample& FakeMediaSample::WithTimes(INT64 start, INT64 stop) {
    m_timeKind = TimeKind::Both;
    m_start = start;
    m_stop = stop;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithStartOnly(INT64 start) {
    m_timeKind = TimeKind::StartOnly;
    m_start = start;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithSyncPoint(bool syncPoint) {
    m_syncPoint = syncPoint;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithPreroll(bool preroll) {
    m_preroll = preroll;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithDiscontinuity(bool discontinuity) {
    m_discontinuity = discontinuity;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithMediaTimes(INT64 start, INT64 stop) {
    m_hasMediaTime = true;
    m_mediaStart = start;
    m_mediaStop = stop;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithClaimedLength(LONG bytes) {
    m_claimedLength = bytes;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithClaimedSize(LONG bytes) {
    m_claimedSize = bytes;
    return *this;
}

FakeMediaSample& FakeMediaSample::WithPointerFailure(HRESULT result) {
    m_pointerResult = result;
    return *this;
}

HRESULT FakeMediaSample::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IMediaSample) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IMediaSample*>(this);
    AddRef();
    return S_OK;
}

HRESULT FakeMediaSample::GetPointer(BYTE** buffer) {
    if (buffer == nullptr) {
        return E_POINTER;
    }
    *buffer = SUCCEEDED(m_pointerResult) ? m_data.data() : nullptr;
    return m_pointerResult;
}

LONG FakeMediaSample::GetSize() {
    return m_claimedSize;
}

HRESULT FakeMediaSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start == nullptr || stop == nullptr) {
        return E_POINTER;
    }
    if (m_timeKind == TimeKind::None) {
        return VFW_E_SAMPLE_TIME_NOT_SET;
    }
    *start = m_start;
    if (m_timeKind == TimeKind::StartOnly) {
        // As documented for samples without a stop time.
        *stop = m_start < std::numeric_limits<REFERENCE_TIME>::max() ? m_start + 1 : m_start;
        return VFW_S_NO_STOP_TIME;
    }
    *stop = m_stop;
    return S_OK;
}

HRESULT FakeMediaSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start == nullptr) {
        m_timeKind = TimeKind::None;
    } else if (stop == nullptr) {
        WithStartOnly(*start);
    } else {
        WithTimes(*start, *stop);
    }
    return S_OK;
}

HRESULT FakeMediaSample::SetSyncPoint(BOOL syncPoint) {
    m_syncPoint = syncPoint != FALSE;
    return S_OK;
}

HRESULT FakeMediaSample::SetPreroll(BOOL preroll) {
    m_preroll = preroll != FALSE;
    return S_OK;
}

HRESULT FakeMediaSample::SetActualDataLength(LONG length) {
    if (length < 0 || length > GetSize()) {
        return VFW_E_BUFFER_OVERFLOW;
    }
    m_claimedLength = length;
    return S_OK;
}

HRESULT FakeMediaSample::GetMediaType(AM_MEDIA_TYPE** mediaType) {
    if (mediaType == nullptr) {
        return E_POINTER;
    }
    *mediaType = nullptr;
    return S_FALSE; // unchanged since the last sample
}

HRESULT FakeMediaSample::SetMediaType(AM_MEDIA_TYPE*) {
    return E_NOTIMPL;
}

HRESULT FakeMediaSample::SetDiscontinuity(BOOL discontinuity) {
    m_discontinuity = discontinuity != FALSE;
    return S_OK;
}

HRESULT FakeMediaSample::GetMediaTime(LONGLONG* start, LONGLONG* stop) {
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

HRESULT FakeMediaSample::SetMediaTime(LONGLONG* start, LONGLONG* stop) {
    if (start == nullptr || stop == nullptr) {
        m_hasMediaTime = false;
    } else {
        WithMediaTimes(*start, *stop);
    }
    return S_OK;
}

} // namespace test_support

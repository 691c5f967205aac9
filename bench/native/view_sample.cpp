#include "bench/native/view_sample.h"

namespace bench {

HRESULT ViewSample::QueryInterface(REFIID iid, void** object) {
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

HRESULT ViewSample::GetPointer(BYTE** buffer) {
    *buffer = const_cast<BYTE*>(m_packet.data); // IMediaSample knows no other pointer; the muxer only reads
    return S_OK;
}

HRESULT ViewSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    *start = m_packet.start;
    *stop = m_packet.stop;
    return S_OK;
}

HRESULT ViewSample::GetMediaType(AM_MEDIA_TYPE** mediaType) {
    *mediaType = nullptr;
    return S_FALSE; // unchanged since the last sample
}

} // namespace bench

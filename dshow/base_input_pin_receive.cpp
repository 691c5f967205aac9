// CBaseInputPin's look at the samples that arrive.
#include "dshow/am_media_type.h"
#include "dshow/base_input_pin.h"
#include "dshow/com_guard.h"

namespace {

// Whether delivering to the connected peer may block; so may a peer that does not tell.
bool PeerCanBlock(IPin& peer) {
    win::ComPtr<IMemInputPin> input;
    return FAILED(peer.QueryInterface(IID_IMemInputPin, input.PutVoid())) || !input ||
           input->ReceiveCanBlock() != S_FALSE;
}

} // namespace

HRESULT CBaseInputPin::ReceiveCanBlock() noexcept {
    return ComGuard([this] {
        int outputs = 0;
        const int count = m_pFilter->GetPinCount();
        for (int i = 0; i < count; ++i) {
            CBasePin* const pin = m_pFilter->GetPin(i);
            PIN_DIRECTION direction = PINDIR_INPUT;
            if (pin == nullptr || FAILED(pin->QueryDirection(&direction)) || direction != PINDIR_OUTPUT) {
                continue;
            }
            ++outputs;
            win::ComPtr<IPin> peer;
            if (SUCCEEDED(pin->ConnectedTo(peer.Put())) && PeerCanBlock(*peer.Get())) {
                return S_OK;
            }
        }
        return outputs == 0 ? S_OK : S_FALSE; // without outputs the samples are consumed here, which may take time
    });
}

HRESULT CBaseInputPin::Receive(IMediaSample* pSample) noexcept {
    if (pSample == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&] { return ReceiveSample(pSample); });
}

HRESULT CBaseInputPin::ReceiveSample(IMediaSample* pSample) {
    HRESULT hr = CheckStreaming();
    if (hr != S_OK) {
        return hr;
    }
    hr = ReadSampleProps(pSample);
    if (FAILED(hr)) {
        return hr;
    }
    if ((m_SampleProps.dwSampleFlags & AM_SAMPLE_TYPECHANGED) == 0 || m_SampleProps.pMediaType == nullptr) {
        return S_OK;
    }
    const CMediaType type(*m_SampleProps.pMediaType);
    return CheckMediaType(&type) == S_OK ? S_OK : RefuseNewType();
}

HRESULT CBaseInputPin::ReadSampleProps(IMediaSample* pSample) {
    m_SampleProps = {};
    m_SampleProps.cbData = sizeof(m_SampleProps);
    win::ComPtr<IMediaSample2> sample2;
    if (SUCCEEDED(pSample->QueryInterface(IID_IMediaSample2, sample2.PutVoid())) && sample2) {
        return sample2->GetProperties(sizeof(m_SampleProps), reinterpret_cast<BYTE*>(&m_SampleProps));
    }
    return ReadPlainSampleProps(pSample);
}

HRESULT CBaseInputPin::ReadPlainSampleProps(IMediaSample* pSample) {
    AM_SAMPLE2_PROPERTIES& props = m_SampleProps;
    const auto flag = [&props](bool set, DWORD bit) { props.dwSampleFlags |= set ? bit : 0; };
    flag(pSample->IsDiscontinuity() == S_OK, AM_SAMPLE_DATADISCONTINUITY);
    flag(pSample->IsPreroll() == S_OK, AM_SAMPLE_PREROLL);
    flag(pSample->IsSyncPoint() == S_OK, AM_SAMPLE_SPLICEPOINT);
    const HRESULT time = pSample->GetTime(&props.tStart, &props.tStop);
    flag(SUCCEEDED(time), AM_SAMPLE_TIMEVALID);
    flag(time == S_OK, AM_SAMPLE_STOPVALID);

    AM_MEDIA_TYPE* newType = nullptr;
    if (pSample->GetMediaType(&newType) == S_OK && newType != nullptr) {
        const HRESULT copied = m_sampleType.Set(*newType);
        DeleteMediaType(newType);
        if (FAILED(copied)) {
            return copied;
        }
        props.dwSampleFlags |= AM_SAMPLE_TYPECHANGED;
        props.pMediaType = &m_sampleType;
    }
    props.lActual = pSample->GetActualDataLength();
    props.cbBuffer = pSample->GetSize();
    return pSample->GetPointer(&props.pbBuffer);
}

// The stream cannot go on in this type: no more samples are taken, and the graph is told to stop.
HRESULT CBaseInputPin::RefuseNewType() {
    m_bRunTimeError = true;
    EndOfStream();
    m_pFilter->NotifyEvent(EC_ERRORABORT, VFW_E_TYPE_NOT_ACCEPTED, 0);
    return VFW_E_INVALIDMEDIATYPE;
}

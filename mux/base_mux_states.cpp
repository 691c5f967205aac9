// The filter's states: what starts and ends streaming.
#include "dshow/com_guard.h"
#include "mux/base_mux.h"
#include "mux/worker_request.h"

STDMETHODIMP CBaseMux::Pause() noexcept {
    return ComGuard([this] {
        const CAutoLock lock(&m_filterLock);
        const FILTER_STATE previous = m_State;
        if (previous == State_Paused) {
            return S_OK;
        }
        m_interleaver.ResetStop();
        m_abort.store(false, std::memory_order_release);
        const HRESULT result = CBaseFilter::Pause();
        if (FAILED(result) || previous != State_Stopped || !HasConnectedInput()) {
            return result;
        }
        const HRESULT started = BeginStreaming();
        return FAILED(started) ? started : result;
    });
}

STDMETHODIMP CBaseMux::Run(REFERENCE_TIME start) noexcept {
    return ComGuard([&] {
        const CAutoLock lock(&m_filterLock);
        return m_State == State_Running ? S_OK : CBaseFilter::Run(start);
    });
}

STDMETHODIMP CBaseMux::Stop() noexcept {
    return ComGuard([this] {
        const CAutoLock lock(&m_filterLock);
        if (m_State == State_Stopped) {
            return S_OK;
        }
        ReleaseAllWaits();
        const HRESULT result = CBaseFilter::Stop();
        StopWorker();
        StopStreaming();
        return result;
    });
}

// Every thread that waits for room, or the worker for packets, gives up soon.
void CBaseMux::ReleaseAllWaits() {
    m_interleaver.SetStop();
    m_abort.store(true, std::memory_order_release);
}

// Streams and worker, or nothing at all: a refused start leaves the filter stopped.
HRESULT CBaseMux::BeginStreaming() {
    HRESULT result = ComGuard([this] { return StartStreaming(); });
    // A bare -1 is meant: the concrete muxer goes on without a file, and end of stream still arrives.
    if (SUCCEEDED(result) || result == kMuxFailedResult) {
        result = StartWorker();
    }
    if (FAILED(result)) {
        ReleaseAllWaits();
        (void)CBaseFilter::Stop();
        StopStreaming();
    }
    return result;
}

// All streams exist before the first pin feeds one, since upstream threads may run already.
HRESULT CBaseMux::StartStreaming() {
    std::vector<CMuxInterStream*> streams;
    for (const auto& pin : m_inputPins) {
        pin->DetachStream();
        streams.push_back(IsInputActive(pin->Index()) ? CreateStream(*pin) : nullptr);
    }
    for (size_t i = 0; i < streams.size(); ++i) {
        m_inputPins[i]->AttachStream(streams[i]);
    }
    m_outputPosition = 0;
    return OnStartStreaming();
}

CMuxInterStream* CBaseMux::CreateStream(CBaseMuxInputPin& pin) {
    const CMediaType& type = pin.CurrentMediaType();
    CMuxInterStream* const stream = m_interleaver.AddStream();
    const bool interleaved = IsStreamInterleaved(&type);
    stream->Attach(&pin, GetStreamKind(&type), interleaved);
    return stream;
}

// The pins let go of their streams before these are destroyed.
void CBaseMux::StopStreaming() {
    (void)ComGuard([this] { return OnStopStreaming(); });
    m_downstream.Reset();
    for (const auto& pin : m_inputPins) {
        pin->DetachStream();
    }
    m_interleaver.ClearStreams();
}

HRESULT CBaseMux::StartWorker() {
    if (ThreadExists()) {
        return S_OK;
    }
    if (!Create()) {
        return E_FAIL;
    }
    CallWorker(kWorkerRun);
    return S_OK;
}

void CBaseMux::StopWorker() {
    if (ThreadExists()) {
        CallWorker(kWorkerExit);
        Close();
    }
}

#include "mux/base_mux.h"

#include <algorithm>

#include "dshow/com_guard.h"
#include "log/logger.h"
#include "win/wide_string.h"

namespace {

constexpr ULONG kOutputSampleBytes = 524288;
constexpr LONG kOutputBuffers = 1;
constexpr LONG kOutputAlignmentBytes = 1;

} // namespace

CBaseMux::CBaseMux(const WCHAR* name, IUnknown* outer, REFCLSID clsid)
    : CBaseFilter(name, outer, &m_filterLock, clsid), CMuxWorker(m_interleaver, m_filterLock),
      m_streaming(*this, m_interleaver) {}

CBaseMux::~CBaseMux() {
    m_streaming.EndAllWaits();
    StopWorker();
    m_outputPin.reset();
    g_Logger.CloseLog();
    CBaseMux::DeleteInputPins();
    m_downstream.Reset();
}

// ---- IMediaFilter -----------------------------------------------------------------------------------------------

STDMETHODIMP CBaseMux::Pause() noexcept {
    return ComGuard([this] {
        const CAutoLock lock(&m_filterLock);
        const FILTER_STATE previous = m_State;
        if (previous == State_Paused) {
            return S_OK;
        }
        m_streaming.AllowWaits();
        const HRESULT hr = CBaseFilter::Pause();
        if (FAILED(hr) || previous != State_Stopped || !HasConnectedInput()) {
            return hr;
        }
        const HRESULT started = BeginStreaming();
        return FAILED(started) ? started : hr;
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
        m_streaming.EndAllWaits();
        const HRESULT hr = CBaseFilter::Stop();
        StopWorker();
        StopStreaming();
        return hr;
    });
}

// Streams and worker, or nothing at all: a refused start leaves the filter stopped.
HRESULT CBaseMux::BeginStreaming() {
    HRESULT hr = ComGuard([this] {
        m_filterLock.AssertHeld();
        return StartStreaming();
    });
    // A bare -1 is meant: the concrete muxer goes on without a file, and end of stream still arrives.
    if (SUCCEEDED(hr) || hr == kMuxFailedResult) {
        hr = StartWorker();
    }
    if (FAILED(hr)) {
        m_streaming.EndAllWaits();
        (void)CBaseFilter::Stop();
        StopStreaming();
    }
    return hr;
}

HRESULT CBaseMux::StartStreaming() {
    m_statistics.BeginRun();
    m_streaming.Start(m_inputPins);
    m_outputPosition = 0;
    return OnStartStreaming();
}

void CBaseMux::StopStreaming() {
    (void)ComGuard([this] { return OnStopStreaming(); });
    m_downstream.Reset();
    m_streaming.Stop(m_inputPins);
}

// ---- The worker -------------------------------------------------------------------------------------------------

void CBaseMux::OnPacket(CMuxInterPacket& packet, CBaseMuxInputPin* pin) {
    (void)ProcessPacket(&packet, pin);
}

// The file is finished when streaming stops, not here.
void CBaseMux::OnAllEnded() {
    if (!m_outputPin || !m_outputPin->IsConnected()) {
        NotifyEvent(EC_COMPLETE, S_OK, 0);
        return;
    }
    LogIfPossible([] { g_Logger << OLESTR("CBaseMux::ThreadProc output->DeliverEndOfStream\r\n"); });
    m_outputPin->DeliverEndOfStream();
}

// Nobody takes packets any more. Who delivers hears why; the end is passed on, so that nobody waits for it for ever.
void CBaseMux::OnLoopFailed(HRESULT failure) {
    for (INT32 i = 0; CMuxInterStream* const stream = m_interleaver.StreamAt(i); ++i) {
        stream->SetStreamResult(failure);
    }
    m_interleaver.SetStop();
    NotifyEvent(EC_STREAM_ERROR_STOPPED, failure, 0);
    (void)ComGuard([this] {
        m_workerThread.AssertHere();
        OnAllEnded();
        return S_OK;
    });
}

// ---- Pins -------------------------------------------------------------------------------------------------------

int CBaseMux::GetPinCount() {
    const CAutoLock lock(&m_filterLock);
    return static_cast<int>(m_inputPins.size()) + (m_outputPin ? 1 : 0);
}

CBasePin* CBaseMux::GetPin(int n) {
    const CAutoLock lock(&m_filterLock);
    if (m_outputPin && n == 0) {
        return m_outputPin.get();
    }
    const int index = m_outputPin ? n - 1 : n;
    if (index < 0 || static_cast<size_t>(index) >= m_inputPins.size()) {
        return nullptr;
    }
    return m_inputPins[static_cast<size_t>(index)].get();
}

bool CBaseMux::HasConnectedInput() const {
    return std::any_of(m_inputPins.begin(), m_inputPins.end(), [](const auto& pin) { return pin->IsConnected(); });
}

int CBaseMux::CreateInputPin(CBaseMuxInputPin** pin, LPCWSTR name) {
    if (pin == nullptr) {
        return kMuxFailed;
    }
    *pin = nullptr;
    const HRESULT hr = ComGuard([&] {
        HRESULT created = S_OK;
        auto fresh = std::make_unique<CBaseMuxInputPin>(OLESTR("MuxPin"), this, &m_filterLock, &created, name);
        if (SUCCEEDED(created)) {
            *pin = fresh.release(); // the caller's from here
        }
        return created;
    });
    return SUCCEEDED(hr) ? kMuxOk : kMuxFailed;
}

int CBaseMux::AddInputPin() {
    const CAutoLock lock(&m_filterLock);
    const size_t index = m_inputPins.size();
    const WideString name = OLESTR("In ") + ToWideDecimal(index);
    m_inputPins.reserve(index + 1);
    CBaseMuxInputPin* created = nullptr;
    if (CreateInputPin(&created, name.c_str()) != kMuxOk || created == nullptr) {
        return kMuxFailed;
    }
    created->SetIndex(static_cast<INT32>(index));
    m_inputPins.emplace_back(created);
    m_inputs.Add();
    m_statistics.AddInput();
    if (index == 0) {
        m_firstInputPin = created;
    }
    IncrementPinVersion();
    return kMuxOk;
}

void CBaseMux::DeleteInputPins() {
    m_firstInputPin = nullptr;
    m_inputPins.clear();
}

HRESULT CBaseMux::EndOfStream(CBaseMuxInputPin* pin) {
    return pin == nullptr ? kMuxFailedResult : pin->QueueEndOfStream();
}

// ---- The defaults of the concrete muxer's table of operations ---------------------------------------------------

HRESULT CBaseMux::CheckInputType(const CMediaType*) {
    return S_OK;
}

HRESULT CBaseMux::SetInputType(CBaseMuxInputPin*, const CMediaType*) {
    return S_OK;
}

HRESULT CBaseMux::BreakInputConnect(CBaseMuxInputPin* pin) {
    if (pin != nullptr) {
        m_inputs.Disconnect(pin->Index());
    }
    return S_OK;
}

HRESULT CBaseMux::CompleteInputConnect(CBaseMuxInputPin* pin, IPin*) {
    const CAutoLock lock(&m_filterLock);
    if (pin != nullptr) {
        m_inputs.Connect(pin->Index(), pin->CurrentMediaType().majortype);
    }
    const bool allConnected =
        std::all_of(m_inputPins.begin(), m_inputPins.end(), [](const auto& input) { return input->IsConnected(); });
    if (allConnected) {
        // The connection stands even when there is no further pin.
        (void)ComGuard([this] { return AddInputPin() == kMuxOk ? S_OK : E_FAIL; });
    }
    return S_OK;
}

HRESULT CBaseMux::CheckOutputType(const CMediaType*) {
    return S_OK;
}

HRESULT CBaseMux::SetOutputType(const CMediaType*) {
    return S_OK;
}

HRESULT CBaseMux::CompleteOutputConnect(IPin* peer) {
    win::ComPtr<IStream> stream;
    if (peer == nullptr || FAILED(peer->QueryInterface(IID_IStream, stream.PutVoid())) || !stream) {
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CBaseMux::BreakOutputConnect() {
    return S_OK;
}

HRESULT CBaseMux::GetOutputMediaType(int position, CMediaType* type) {
    if (position < 0) {
        return E_INVALIDARG;
    }
    if (position > 0) {
        return VFW_S_NO_MORE_ITEMS;
    }
    if (type == nullptr) {
        return E_POINTER;
    }
    type->SetType(&MEDIATYPE_Stream);
    type->SetSubtype(&MEDIASUBTYPE_None);
    type->SetSampleSize(kOutputSampleBytes);
    // The subtype's value and not FORMAT_None, on purpose.
    type->SetFormatType(&MEDIASUBTYPE_None);
    return S_OK;
}

// No sample is ever delivered through this allocator; the connection only needs one.
HRESULT CBaseMux::DecideOutputBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties) {
    if (allocator == nullptr || properties == nullptr || !m_outputPin) {
        return E_POINTER;
    }
    properties->cBuffers = kOutputBuffers;
    properties->cbBuffer = static_cast<LONG>(m_outputPin->CurrentMediaType().GetSampleSize());
    properties->cbAlign = kOutputAlignmentBytes;
    properties->cbPrefix = 0;
    ALLOCATOR_PROPERTIES actual{};
    if (const HRESULT hr = allocator->SetProperties(properties, &actual); FAILED(hr)) {
        return hr;
    }
    const bool enough = actual.cBuffers >= kOutputBuffers && actual.cbBuffer >= properties->cbBuffer &&
                        actual.cbAlign >= kOutputAlignmentBytes;
    return enough ? S_OK : E_FAIL;
}

HRESULT CBaseMux::OnStartStreaming() {
    win::ComPtr<IPin> peer;
    if (m_outputPin && SUCCEEDED(m_outputPin->ConnectedTo(peer.Put()))) {
        m_downstream = peer.Query<IStream>(IID_IStream);
    }
    return S_OK;
}

HRESULT CBaseMux::OnStopStreaming() {
    m_downstream.Reset();
    return S_OK;
}

int CBaseMux::ProcessPacket(CMuxInterPacket*, CBaseMuxInputPin*) {
    return kMuxOk;
}

bool CBaseMux::IsStreamInterleaved(const CMediaType*) {
    return true;
}

MuxStreamKind CBaseMux::GetStreamKind(const CMediaType*) {
    return MuxStreamKind::Other;
}

int CBaseMux::WriteOutput(const BYTE* bytes, INT32 length) {
    if (!m_outputPin || !m_outputPin->IsConnected() || !m_downstream || bytes == nullptr || length < 1) {
        return kMuxFailed;
    }
    LARGE_INTEGER position;
    position.QuadPart = static_cast<INT64>(m_outputPosition);
    if (FAILED(m_downstream->Seek(position, STREAM_SEEK_SET, nullptr))) {
        return kMuxFailed;
    }
    // Also when the write then fails: what comes next belongs behind these bytes.
    m_outputPosition += static_cast<UINT32>(length);
    const auto size = static_cast<ULONG>(length);
    ULONG written = size;
    if (FAILED(m_downstream->Write(bytes, size, &written)) || written < size) {
        return kMuxFailed;
    }
    return kMuxOk;
}

bool CBaseMux::IsInputActive(int pinIndex) {
    const CAutoLock lock(&m_filterLock);
    return pinIndex >= 0 && static_cast<size_t>(pinIndex) < m_inputPins.size() &&
           m_inputPins[static_cast<size_t>(pinIndex)]->IsConnected();
}

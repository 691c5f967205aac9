#include "mux/base_mux_input_pin.h"

#include "dshow/com_guard.h"
#include "mux/base_mux.h"
#include "mux/sample_reader.h"

namespace {

constexpr DWORD kPollMs = 20; // how late a flush or an abort may be seen

} // namespace

CBaseMuxInputPin::CBaseMuxInputPin(const WCHAR* objectName, CBaseMux* filter, CCritSec* lock, HRESULT* result,
                                   LPCWSTR pinName)
    : CBaseInputPin(objectName, filter, lock, result, pinName), m_mux(filter) {}

HRESULT CBaseMuxInputPin::CheckMediaType(const CMediaType* type) {
    return type == nullptr ? E_POINTER : m_mux->CheckInputType(type);
}

HRESULT CBaseMuxInputPin::SetMediaType(const CMediaType* type) {
    const HRESULT result = CBaseInputPin::SetMediaType(type);
    return FAILED(result) ? result : m_mux->SetInputType(this, type);
}

HRESULT CBaseMuxInputPin::CompleteConnect(IPin* peer) {
    const HRESULT result = CBaseInputPin::CompleteConnect(peer);
    return FAILED(result) ? result : m_mux->CompleteInputConnect(this, peer);
}

HRESULT CBaseMuxInputPin::BreakConnect() {
    const HRESULT result = CBaseInputPin::BreakConnect();
    return FAILED(result) ? result : m_mux->BreakInputConnect(this);
}

HRESULT CBaseMuxInputPin::Inactive() {
    HRESULT result = CBaseInputPin::Inactive();
    if (result == VFW_E_NO_ALLOCATOR) {
        result = S_OK; // samples are only read here, so whoever sends them need not say where they come from
    }
    if (SUCCEEDED(result)) {
        m_grouper.Clear();
    }
    return result;
}

STDMETHODIMP CBaseMuxInputPin::BeginFlush() noexcept {
    const HRESULT result = CBaseInputPin::BeginFlush();
    return FAILED(result) ? result : S_OK;
}

STDMETHODIMP CBaseMuxInputPin::EndFlush() noexcept {
    const HRESULT result = CBaseInputPin::EndFlush();
    return FAILED(result) ? result : S_OK;
}

STDMETHODIMP CBaseMuxInputPin::EndOfStream() noexcept {
    return ComGuard([this] { return m_mux->EndOfStream(this); });
}

STDMETHODIMP CBaseMuxInputPin::Receive(IMediaSample* sample) noexcept {
    if (sample == nullptr) {
        return E_POINTER;
    }
    return ComGuard([&] { return ReceiveSample(*sample); });
}

HRESULT CBaseMuxInputPin::ReceiveSample(IMediaSample& sample) {
    const StreamGate::Pass pass(m_gate);
    CMuxInterStream* const stream = pass.Stream();
    if (stream == nullptr) {
        return S_FALSE;
    }
    if (const HRESULT result = stream->StreamResult(); result != S_OK) {
        return result;
    }
    CMuxInterleaver& interleaver = m_mux->Interleaver();
    std::unique_ptr<CMuxInterPacket> packet;
    if (WaitForRoom(*stream) != RoomWait::Writable ||
        interleaver.NewPacket(static_cast<INT32>(stream->Index()), packet) != kMuxOk) {
        return S_OK;
    }
    ReadSample(sample, *packet);
    for (auto& ready : m_grouper.Add(std::move(packet), m_mt)) {
        if (ready->size > 0) {
            interleaver.AddPacket(std::move(ready));
        }
    }
    return S_OK;
}

CBaseMuxInputPin::RoomWait CBaseMuxInputPin::WaitForRoom(CMuxInterStream& stream) {
    for (;;) {
        if (IsFlushing()) {
            return RoomWait::Flushing;
        }
        const auto wait = m_mux->Interleaver().WaitForRoom(stream, kPollMs);
        if (m_mux->IsAborted()) {
            return RoomWait::Aborted;
        }
        if (wait != CMuxInterleaver::RoomWait::TimedOut) {
            return wait == CMuxInterleaver::RoomWait::Writable ? RoomWait::Writable : RoomWait::Stopping;
        }
    }
}

void CBaseMuxInputPin::AttachStream(CMuxInterStream* stream) {
    m_grouper.Clear();
    m_gate.Open(stream);
}

void CBaseMuxInputPin::DetachStream() {
    m_gate.Close();
    // A sample that was inside when the pin became inactive may have left a packet behind.
    m_grouper.Clear();
}

#include "mux/base_mux_input_pin.h"

#include "dshow/com_guard.h"
#include "log/logger.h"
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
    const HRESULT hr = CBaseInputPin::SetMediaType(type);
    return FAILED(hr) ? hr : m_mux->SetInputType(this, type);
}

HRESULT CBaseMuxInputPin::CompleteConnect(IPin* peer) {
    const HRESULT hr = CBaseInputPin::CompleteConnect(peer);
    return FAILED(hr) ? hr : m_mux->CompleteInputConnect(this, peer);
}

HRESULT CBaseMuxInputPin::BreakConnect() {
    const HRESULT hr = CBaseInputPin::BreakConnect();
    return FAILED(hr) ? hr : m_mux->BreakInputConnect(this);
}

HRESULT CBaseMuxInputPin::Inactive() {
    HRESULT hr = CBaseInputPin::Inactive();
    if (hr == VFW_E_NO_ALLOCATOR) {
        hr = S_OK; // samples are only read here, so whoever sends them need not say where they come from
    }
    if (SUCCEEDED(hr)) {
        DropHeldPackets();
    }
    return hr;
}

STDMETHODIMP CBaseMuxInputPin::BeginFlush() noexcept {
    const HRESULT hr = CBaseInputPin::BeginFlush();
    return FAILED(hr) ? hr : S_OK;
}

STDMETHODIMP CBaseMuxInputPin::EndFlush() noexcept {
    const HRESULT hr = CBaseInputPin::EndFlush();
    return FAILED(hr) ? hr : S_OK;
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
    const CStreamGate::Pass pass(m_gate);
    CMuxInterStream* const stream = pass.Stream();
    if (stream == nullptr) {
        m_mux->Statistics().CountRefused(m_index);
        return S_FALSE;
    }
    if (const HRESULT hr = stream->StreamResult(); hr != S_OK) {
        m_mux->Statistics().CountRefused(m_index);
        return hr;
    }
    CMuxInterleaver& interleaver = m_mux->Interleaver();
    std::unique_ptr<CMuxInterPacket> packet;
    if (WaitForRoom(*stream) != RoomWait::Writable ||
        interleaver.NewPacket(static_cast<INT32>(stream->Index()), packet) != kMuxOk) {
        return S_OK;
    }
    ReadSample(sample, stream->Payloads(), *packet);
    const win::LockGuard lock(m_groupLock);
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
    DropHeldPackets();
    m_gate.Open(stream);
}

void CBaseMuxInputPin::DetachStream() {
    m_gate.Close();
    // A sample that was inside when the pin became inactive may have left a packet behind.
    DropHeldPackets();
}

void CBaseMuxInputPin::DropHeldPackets() {
    const win::LockGuard lock(m_groupLock);
    m_grouper.Clear();
}

// ---- End of stream ----------------------------------------------------------------------------------------------

HRESULT CBaseMuxInputPin::QueueEndOfStream() {
    const CStreamGate::Pass pass(m_gate);
    CMuxInterStream* const stream = pass.Stream();
    if (stream == nullptr) {
        return kMuxFailedResult;
    }
    LogLine(OLESTR("CBaseMux::EndOfStream pin="));
    return WaitForRoomAtEnd(*stream) && AddEndOfStream(*stream) ? S_OK : kMuxFailedResult;
}

bool CBaseMuxInputPin::WaitForRoomAtEnd(CMuxInterStream& stream) {
    LogLine(OLESTR("CBaseMux::EndOfStream wait WaitStreamWritable pin="));
    switch (WaitForRoom(stream)) {
    case RoomWait::Writable:
        LogLine(OLESTR("CBaseMux::EndOfStream wait dw == WAIT_OBJECT_0 pin="));
        return true;
    case RoomWait::Flushing:
        LogLine(OLESTR("CBaseMux::EndOfStream (pin->IsFlushing())"));
        return false;
    case RoomWait::Stopping:
        LogLine(OLESTR("CBaseMux::EndOfStream wait (return -1) pin="));
        return false;
    case RoomWait::Aborted:
        break;
    }
    return false;
}

bool CBaseMuxInputPin::AddEndOfStream(CMuxInterStream& stream) {
    CMuxInterleaver& interleaver = m_mux->Interleaver();
    if (!AddHeldPackets(interleaver)) {
        return false;
    }
    std::unique_ptr<CMuxInterPacket> packet;
    if (interleaver.NewPacket(static_cast<INT32>(stream.Index()), packet) != kMuxOk) {
        return false;
    }
    packet->endOfStream = true;
    const win::LockGuard lock(m_groupLock);
    return interleaver.AddPacket(std::move(packet)) == kMuxOk;
}

// They go as they are, unmerged; those without data are nothing to write.
bool CBaseMuxInputPin::AddHeldPackets(CMuxInterleaver& interleaver) {
    const win::LockGuard lock(m_groupLock);
    for (auto& held : m_grouper.TakeAll()) {
        if (held->size > 0 && interleaver.AddPacket(std::move(held)) != kMuxOk) {
            return false;
        }
    }
    return true;
}

// Ends with the pin's identity; any stable number serves the log's reader.
void CBaseMuxInputPin::LogLine(const WCHAR* text) const {
    LogIfPossible([&] { g_Logger << text << static_cast<INT64>(reinterpret_cast<intptr_t>(this)) << OLESTR("\r\n"); });
}

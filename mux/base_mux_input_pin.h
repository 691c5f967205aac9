// CBaseMuxInputPin: turns the samples of one upstream filter into packets, grouped to frames, and queues them.
//
// Units: times in 100 ns. Owner: the filter. The stream is the interleaver's, and there only while streaming.
// Threads: Receive and EndOfStream on the upstream thread, flushes on any; the rest under the filter lock.
// Errors: Receive drops samples silently when flushing or stopping; E_OUTOFMEMORY when memory is short. End of stream
// answers kMuxFailedResult instead.
#pragma once

#include "dshow/base_input_pin.h"
#include "mux/frame_grouper.h"
#include "mux/stream_gate.h"

class CBaseMux;
class CMuxInterStream;
class CMuxInterleaver;

class CBaseMuxInputPin : public CBaseInputPin {
  public:
    CBaseMuxInputPin(const WCHAR* objectName, CBaseMux* filter, CCritSec* lock, HRESULT* result, LPCWSTR pinName);

    // IPin
    STDMETHODIMP EndOfStream() noexcept override;
    STDMETHODIMP BeginFlush() noexcept override;
    STDMETHODIMP EndFlush() noexcept override;
    // IMemInputPin. S_FALSE when not streaming; else the stream's result, or S_OK also for dropped samples.
    STDMETHODIMP Receive(IMediaSample* sample) noexcept override;
    // CBasePin
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT SetMediaType(const CMediaType* type) override;
    HRESULT CompleteConnect(IPin* peer) override;
    HRESULT BreakConnect() override;
    HRESULT Inactive() override;

    [[nodiscard]] INT32 Index() const { return m_index; }
    void SetIndex(INT32 index) { m_index = index; }
    // The stream that this pin feeds; null when not streaming or not active.
    [[nodiscard]] CMuxInterStream* Stream() const { return m_gate.Stream(); }

    // ---- For the filter ----

    void AttachStream(CMuxInterStream* stream);
    // Waits until no upstream thread uses the stream any more. The stop event must be set before.
    void DetachStream();
    // Queues the end behind the pin's data, so that it can never overtake any. Waits for room.
    [[nodiscard]] HRESULT QueueEndOfStream();

  private:
    enum class RoomWait { Writable, Flushing, Aborted, Stopping };

    HRESULT ReceiveSample(IMediaSample& sample);
    // Polls until the stream has room; a flush or a stop ends it soon.
    [[nodiscard]] RoomWait WaitForRoom(CMuxInterStream& stream);
    [[nodiscard]] bool WaitForRoomAtEnd(CMuxInterStream& stream);
    [[nodiscard]] bool AddEndOfStream(CMuxInterStream& stream);
    [[nodiscard]] bool AddHeldPackets(CMuxInterleaver& interleaver);
    void DropHeldPackets();
    void LogLine(const WCHAR* text) const;

    CBaseMux* const m_mux; // not owned: it owns this pin
    INT32 m_index = -1;    // its position in the filter's list
    CStreamGate m_gate;
    // The group lock. What it lets through is queued inside it, so that the stream has one producer at a time.
    win::CriticalSection m_groupLock;
    CFrameGrouper m_grouper QRX_GUARDED_BY(m_groupLock);
};

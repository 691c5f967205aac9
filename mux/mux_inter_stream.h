// CMuxInterStream: the queue of one active input between its pin and the worker, and what the interleaver knows of it.
//
// Units: bytes. Owner: the interleaver; the pin is not owned.
// Threads: the queue and the waiting flags under the interleaver's lock; the result and the writable event from any
// thread; the rest is set before streaming.
#pragma once

#include <atomic>
#include <deque>
#include <memory>

#include "mux/manual_reset_event.h"
#include "mux/mux_inter_packet.h"
#include "mux/mux_stream_kind.h"
#include "win/condition_variable.h"

class CBaseMuxInputPin;

class CMuxInterStream {
  public:
    // lock: the interleaver's, which guards the queue and the waiting flags; none when one thread has the stream alone.
    explicit CMuxInterStream(UINT32 index, const win::CriticalSection* lock = nullptr) : m_index(index), m_lock(lock) {}
    virtual ~CMuxInterStream() = default;
    CMuxInterStream(const CMuxInterStream&) = delete;
    CMuxInterStream& operator=(const CMuxInterStream&) = delete;

    // The queued bytes at which producers of such a stream block.
    [[nodiscard]] static UINT32 ByteLimitOf(MuxStreamKind kind);

    // Makes the stream an active one; before streaming starts.
    void Attach(CBaseMuxInputPin* pin, MuxStreamKind kind, bool interleaved);

    // From now on the pin's Receive answers this, unless it is zero.
    void SetStreamResult(HRESULT result) { m_result.store(result, std::memory_order_release); }
    [[nodiscard]] HRESULT StreamResult() const { return m_result.load(std::memory_order_acquire); }

    [[nodiscard]] UINT32 Index() const { return m_index; }
    [[nodiscard]] CBaseMuxInputPin* Pin() const { return m_pin; }
    [[nodiscard]] MuxStreamKind Kind() const { return m_kind; }
    [[nodiscard]] UINT32 ByteLimit() const { return m_byteLimit; }
    [[nodiscard]] bool IsActive() const { return m_active; }
    [[nodiscard]] bool IsWritable() const { return m_writable.IsSet(); }

    // ---- Under the interleaver's lock from here on, which whatever touches the packets asserts ----

    void Append(std::unique_ptr<CMuxInterPacket> packet);
    // None when the queue is empty or has come to its end: an end-of-stream packet is never handed out.
    [[nodiscard]] std::unique_ptr<CMuxInterPacket> TakeFront();

    [[nodiscard]] size_t QueuedPackets() const { return m_packets.size(); }
    [[nodiscard]] UINT64 QueuedBytes() const { return m_queuedBytes; }
    [[nodiscard]] bool IsEmpty() const { return m_packets.empty(); }
    // All that the stream will ever give has been taken.
    [[nodiscard]] bool HasEnded() const { return !IsEmpty() && m_packets.front()->endOfStream; }
    [[nodiscard]] bool SawEndOfStream() const { return m_endOfStreamSeen; }
    // No packet may be chosen before this stream has one.
    [[nodiscard]] bool MustBeWaitedFor() const { return m_interleaved && IsEmpty() && !m_endOfStreamSeen; }
    [[nodiscard]] INT64 OldestStart() const {
        AssertLocked();
        return m_packets.front()->start;
    }
    [[nodiscard]] INT64 NewestStart() const {
        AssertLocked();
        return m_packets.back()->start;
    }

    [[nodiscard]] bool IsInterleaved() const { return m_interleaved; }
    [[nodiscard]] bool IsSuspended() const { return m_suspended; }
    // A stall breaker stops the waiting for this stream; its next packet brings it back.
    void Suspend();
    // Waits for the stream again although nothing was queued; it stays marked as suspended.
    void WaitAgain() { m_interleaved = true; }

    // Where the stream's producers sleep until it is writable.
    win::ConditionVariable& Producers() { return m_producers; }

  private:
    void AssertLocked() const {
        if (m_lock != nullptr) {
            m_lock->AssertHeld();
        }
    }

    const UINT32 m_index;
    const win::CriticalSection* const m_lock; // not owned
    CBaseMuxInputPin* m_pin = nullptr;        // not owned
    MuxStreamKind m_kind = MuxStreamKind::Other;
    UINT32 m_byteLimit = ByteLimitOf(MuxStreamKind::Other);
    bool m_active = false;
    bool m_interleaved = true;
    bool m_suspended = false;
    bool m_endOfStreamSeen = false;
    std::deque<std::unique_ptr<CMuxInterPacket>> m_packets;
    UINT64 m_queuedBytes = 0;
    CManualResetEvent m_writable{true}; // set while m_queuedBytes is below m_byteLimit
    win::ConditionVariable m_producers;
    std::atomic<HRESULT> m_result{S_OK};
};

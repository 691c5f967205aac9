// CMuxInterStream: the queue of one active input between its pin and the worker, and what the interleaver knows of it.
//
// Units: bytes. Owner: the interleaver; the pin is not owned.
// Threads: one producer at a time (the pin's group lock) and one consumer, the worker, each with methods of its own;
// neither takes a lock. Any thread may ask for counts, flags and the result and give packets back; Attach comes before
// streaming. Where one side sleeps is the interleaver's business.
#pragma once

#include <atomic>
#include <limits>
#include <memory>

#include "mux/cache_line.h"
#include "mux/mux_inter_packet.h"
#include "mux/mux_stream_kind.h"
#include "mux/packet_pool.h"
#include "mux/packet_queue.h"
#include "mux/payload_pool.h"
#include "win/condition_variable.h"

class CBaseMuxInputPin;

class CMuxInterStream {
  public:
    explicit CMuxInterStream(UINT32 index) : m_index(index) {}
    virtual ~CMuxInterStream() = default;
    CMuxInterStream(const CMuxInterStream&) = delete;
    CMuxInterStream& operator=(const CMuxInterStream&) = delete;

    // The queued bytes at which producers of such a stream block.
    [[nodiscard]] static UINT32 ByteLimitOf(MuxStreamKind kind);
    // The packets at which they do as well: hours of any real stream, and with what each packet takes besides its bytes
    // some 150 MiB of one that was made to fill the memory.
    static constexpr size_t kMaxQueuedPackets = size_t{1} << 20;

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

    // Where its packets and their payloads come from and go back to, on any thread.
    [[nodiscard]] CPacketPool& Packets() { return m_packetPool; }
    [[nodiscard]] CPayloadPool& Payloads() { return *m_payloadPool; }

    // ---- The queue as any thread sees it; it may change at once ----

    [[nodiscard]] size_t QueuedPackets() const { return m_queue.Count(); }
    [[nodiscard]] bool IsEmpty() const { return m_queue.Count() == 0; }
    // What was taken is read first, so that it is never more than what was added.
    [[nodiscard]] UINT64 QueuedBytes() const {
        const UINT64 taken = m_takenBytes.load(std::memory_order_seq_cst);
        return m_addedBytes.load(std::memory_order_acquire) - taken;
    }
    [[nodiscard]] bool IsWritable() const { return QueuedBytes() < m_byteLimit && QueuedPackets() < kMaxQueuedPackets; }
    [[nodiscard]] bool SawEndOfStream() const { return m_endOfStreamSeen.load(std::memory_order_acquire); }
    // Of the newest packet; there is one.
    [[nodiscard]] INT64 NewestStart() const { return m_newestStart.load(std::memory_order_acquire); }

    // ---- What any thread may be told of it ----

    struct Figures {
        UINT64 packets = 0; // that were taken and not lost
        UINT64 bytes = 0;
        UINT64 queuedPackets = 0;
        UINT64 queuedBytes = 0;
        UINT64 queuePeakBytes = 0; // to a thousandth of the limit
        INT64 lastStart = 0;       // of the packet taken last
        UINT64 lost = 0;           // packets that were taken and did not get into the file
        UINT64 late = 0;           // packets that came behind later ones, since nobody waited for them any more
        UINT32 silences = 0;       // how often it was given up on
        bool isSilent = false;
    };
    [[nodiscard]] Figures GetFigures() const;

    // A stream that was suspended is so until its next packet; the two say so before the worker has taken that one.
    [[nodiscard]] bool IsInterleaved() const {
        return m_interleaved.load(std::memory_order_relaxed) ||
               (m_suspended.load(std::memory_order_relaxed) && !IsEmpty());
    }
    [[nodiscard]] bool IsSuspended() const { return m_suspended.load(std::memory_order_relaxed) && IsEmpty(); }
    // No packet may be chosen before this stream has one. An end of stream is one, and stays.
    [[nodiscard]] bool MustBeWaitedFor() const { return m_interleaved.load(std::memory_order_relaxed) && IsEmpty(); }

    // ---- The producer's ----

    void Append(std::unique_ptr<CMuxInterPacket> packet);
    // As IsWritable, but as a rule without a look at what the worker writes.
    [[nodiscard]] bool HasRoom();

    // ---- The worker's ----

    // None when the queue is empty or has come to its end: an end-of-stream packet is never handed out.
    [[nodiscard]] std::unique_ptr<CMuxInterPacket> TakeFront();
    // What was taken last did not get into the file.
    void CountLost(UINT32 bytes);
    // The packet was taken, and those before it began at this time at the latest. True when the stream was given up on
    // and it is the first one since then.
    [[nodiscard]] bool CountTaken(const CMuxInterPacket& packet, INT64 newestBefore);
    // Null when the queue is empty. An end of stream is a front: all that the stream will ever give has been taken.
    [[nodiscard]] const CMuxInterPacket* Front() { return m_queue.Front(); }
    [[nodiscard]] bool HasEnded() {
        const CMuxInterPacket* const front = Front();
        return front != nullptr && front->endOfStream;
    }
    // A stall breaker stops the waiting for this stream, which has nothing queued; its next packet brings it back. True
    // when it was not suspended before.
    bool Suspend();
    // Waits for the stream again although nothing was queued; it stays marked as suspended.
    void WaitAgain() { m_interleaved.store(true, std::memory_order_relaxed); }

    // ---- For the interleaver, which changes all of it under its lock ----

    // The worker sleeps until this stream has a packet. Whoever sets it looks for one once more before it sleeps, and
    // whoever appends looks at it afterwards; both in one order that all threads see.
    [[nodiscard]] bool IsAwaited() const { return m_awaited.load(std::memory_order_seq_cst); }
    void SetAwaited(bool awaited) { m_awaited.store(awaited, std::memory_order_seq_cst); }
    // The same for producers that sleep until there is room.
    [[nodiscard]] bool IsRoomAwaited() const { return m_roomAwaited.load(std::memory_order_seq_cst); }
    void SetRoomAwaited(bool awaited) { m_roomAwaited.store(awaited, std::memory_order_seq_cst); }
    // Low enough that waking the producers is worth it: they find room for more than one packet.
    [[nodiscard]] bool HasMuchRoom() const {
        return QueuedBytes() <= m_byteLimit / 2 && QueuedPackets() <= kMaxQueuedPackets / 2;
    }
    // Where they sleep.
    win::ConditionVariable& Producers() { return m_producers; }

  private:
    void NotePeak(UINT64 addedBytes);

    const UINT32 m_index;
    CBaseMuxInputPin* m_pin = nullptr; // not owned
    MuxStreamKind m_kind = MuxStreamKind::Other;
    UINT32 m_byteLimit = ByteLimitOf(MuxStreamKind::Other);
    bool m_active = false;
    std::atomic<HRESULT> m_result{S_OK};
    std::atomic<bool> m_awaited{false};
    std::atomic<bool> m_roomAwaited{false};
    win::ConditionVariable m_producers;

    [[maybe_unused]] CacheLineGap m_gap{};
    std::atomic<UINT64> m_addedBytes{0}; // written by the producer from here on
    std::atomic<UINT64> m_takenBytesSeen{0};
    std::atomic<UINT32> m_addedSinceLook{0}; // packets, since the producer last looked at what was taken
    std::atomic<INT64> m_newestStart{0};
    std::atomic<bool> m_endOfStreamSeen{false};
    std::atomic<UINT64> m_addedPackets{0}; // without ends of stream
    std::atomic<UINT64> m_peakBytes{0};

    [[maybe_unused]] CacheLineGap m_otherGap{};
    std::atomic<UINT64> m_takenBytes{0}; // written by the worker from here on
    std::atomic<bool> m_interleaved{true};
    std::atomic<bool> m_suspended{false}; // as the worker knows; see IsSuspended
    std::atomic<UINT64> m_takenPackets{0};
    std::atomic<INT64> m_lastStart{0};
    std::atomic<UINT64> m_lostPackets{0};
    std::atomic<UINT64> m_lostBytes{0};
    std::atomic<UINT64> m_latePackets{0};
    std::atomic<UINT32> m_silences{0};
    bool m_hasReturned = false;                             // the packet that was taken last ended a silence
    INT64 m_lateBefore = std::numeric_limits<INT64>::min(); // packets that begin before it are late

    [[maybe_unused]] CacheLineGap m_lastGap{};
    CPacketPool m_packetPool;
    const CPayloadPool::Handle m_payloadPool = CPayloadPool::Make();
    CPacketQueue m_queue; // the last, so that what is queued goes before the pools
};

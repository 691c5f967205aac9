// CMuxInterleaver: merges the packets of all streams into one sequence ordered by start time.
//
// Units: milliseconds. Owner: the filter; it owns the streams, and the packets from AddPacket to GetNextPacket.
// Threads: producers add, one worker takes; AddStream and ClearStreams only while neither runs.
// Waiting: all flags change under the one lock, and whoever sleeps looks at them under it first, so no wake-up is lost.
// The events' flags can also be read without it, so that nobody locks or calls the kernel for what already holds.
#pragma once

#include <memory>
#include <vector>

#include "mux/manual_reset_event.h"
#include "mux/mux_inter_packet.h"
#include "mux/mux_inter_stream.h"
#include "mux/mux_result.h"
#include "mux/tick_clock.h"
#include "win/condition_variable.h"
#include "win/critical_section.h"

class CMuxInterleaver {
  public:
    enum class RoomWait { Writable, Stopping, TimedOut };

    CMuxInterleaver() = default;
    virtual ~CMuxInterleaver() = default;
    CMuxInterleaver(const CMuxInterleaver&) = delete;
    CMuxInterleaver& operator=(const CMuxInterleaver&) = delete;

    // Owned by the interleaver until ClearStreams.
    CMuxInterStream* AddStream();
    void ClearStreams();
    // Null outside the range. Neither takes the lock, on purpose: whoever adds, takes or waits finds a stream without
    // contention, and the list stays as it is while any of them runs.
    [[nodiscard]] CMuxInterStream* StreamAt(INT32 index) const QRX_NO_ANALYSIS;
    [[nodiscard]] size_t StreamCount() const QRX_NO_ANALYSIS { return m_streams.size(); }

    // Ends every wait until it is reset.
    void SetStop();
    void ResetStop();
    [[nodiscard]] bool IsStopping() const { return m_stopEvent.IsSet(); }

    // Until the stream has room, or stop, or the time is up; may give up early.
    [[nodiscard]] RoomWait WaitForRoom(CMuxInterStream& stream, DWORD timeoutMs);
    // An empty packet as soon as the stream has room, without time limit; kMuxFailed and none when stopping.
    [[nodiscard]] int NewPacket(INT32 streamIndex, std::unique_ptr<CMuxInterPacket>& packet);
    // Takes the packet over, also when it refuses it (kMuxFailed) because there is no such stream.
    int AddPacket(std::unique_ptr<CMuxInterPacket> packet);
    // kMuxOk, kMuxFailed when there was nothing to take in time, kMuxStopping or kMuxAllEnded.
    [[nodiscard]] int GetNextPacket(std::unique_ptr<CMuxInterPacket>& packet, DWORD timeoutMs);

    // ---- For the stall breakers ----

    [[nodiscard]] bool IsVideoOrAudioQueueFull() const;
    // Stops waiting for every stream that is waited for and has nothing queued.
    void SuspendEmptyStreams();
    // Waits again for the suspended subtitle streams.
    void ResumeSubtitles();
    [[nodiscard]] UINT32 QueuedPacketCount() const;
    // The latest of the streams' newest start times; 0 when nothing is queued.
    [[nodiscard]] INT64 NewestStart() const;

  private:
    int Choose(CMuxInterStream*& chosen) const QRX_REQUIRES(m_lock);
    int TakeEarliest(std::unique_ptr<CMuxInterPacket>& packet) QRX_REQUIRES(m_lock);
    bool SleepUntil(UINT64 deadline) QRX_REQUIRES(m_lock);

    // Also guards the streams' queues and flags; the queues assert it.
    mutable win::CriticalSection m_lock;
    // The list itself changes only while no producer and no worker runs.
    std::vector<std::unique_ptr<CMuxInterStream>> m_streams QRX_GUARDED_BY(m_lock);
    CManualResetEvent m_stopEvent{false}; // changes under the lock, is read by anybody
    CManualResetEvent m_dataEvent{false}; // the same; set by the first packet ever queued, never reset
    win::ConditionVariable m_worker QRX_GUARDED_BY(m_lock); // where GetNextPacket sleeps
    CTickClock m_clock QRX_GUARDED_BY(m_lock);
};

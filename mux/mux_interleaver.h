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
    // Null outside the range. Takes no lock: see m_streams.
    [[nodiscard]] CMuxInterStream* StreamAt(INT32 index) const;
    [[nodiscard]] size_t StreamCount() const { return m_streams.size(); }

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
    int Choose(CMuxInterStream*& chosen) const;
    int TakeEarliest(std::unique_ptr<CMuxInterPacket>& packet);
    bool SleepUntil(UINT64 deadline);

    mutable win::CriticalSection m_lock; // guards the streams' queues and flags, and every change of what is below
    // The list itself changes only while no producer and no worker runs, so they find their stream in it without the
    // lock.
    std::vector<std::unique_ptr<CMuxInterStream>> m_streams;
    ManualResetEvent m_stopEvent{false};
    ManualResetEvent m_dataEvent{false}; // set by the first packet ever queued, never reset
    win::ConditionVariable m_worker;     // where GetNextPacket sleeps
    TickClock m_clock;
};

// CMuxInterleaver: merges the packets of all streams into one sequence ordered by start time.
//
// Units: milliseconds. Owner: the filter; it owns the streams, and the packets from AddPacket to GetNextPacket.
// Threads: producers add, one a stream at a time; one worker takes, and alone calls what the stall breakers need;
// AddStream and ClearStreams only while neither runs.
// Waiting: packets flow without a lock. Who must sleep takes the lock, announces it (CMuxInterStream), looks once more
// and sleeps; who changes what it sleeps for looks at the announcement afterwards, and takes the lock only to wake it.
#pragma once

#include <limits>
#include <memory>
#include <vector>

#include "mux/front_order.h"
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
    // Null outside the range.
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
    static constexpr INT64 kNothingTaken = std::numeric_limits<INT64>::min();

    int TakeNow(std::unique_ptr<CMuxInterPacket>& packet);
    void CountTaken(CMuxInterStream& stream, const CMuxInterPacket& packet);
    void OfferRoom(CMuxInterStream& stream) QRX_EXCLUDES(m_lock);
    int SleepAndTake(std::unique_ptr<CMuxInterPacket>& packet, DWORD timeoutMs);
    int TakeOrAwait(std::unique_ptr<CMuxInterPacket>& packet) QRX_REQUIRES(m_lock);
    bool SleepUntil(UINT64 deadline) QRX_REQUIRES(m_lock);
    void Await(CMuxInterStream& stream) QRX_REQUIRES(m_lock);
    void AwaitAll() QRX_REQUIRES(m_lock);
    void AwaitNone() QRX_REQUIRES(m_lock);
    bool AwaitAnother() QRX_REQUIRES(m_lock);
    void WakeWorker(CMuxInterStream& stream) QRX_EXCLUDES(m_lock);
    void AwaitRoom(CMuxInterStream& stream) QRX_REQUIRES(m_lock);
    void WakeProducers(CMuxInterStream& stream) QRX_REQUIRES(m_lock);

    // Changes only while no producer and no worker runs.
    std::vector<std::unique_ptr<CMuxInterStream>> m_streams;
    CManualResetEvent m_stopEvent{false}; // changes under the lock, is read by anybody
    CManualResetEvent m_dataEvent{false}; // set with the first packet ever added, never reset
    CFrontOrder m_order;                  // the worker's
    CTickClock m_clock;                   // the worker's
    INT64 m_newestTaken = kNothingTaken;  // the worker's: the latest start of what was taken
    // For sleeping and waking alone: also guards what the streams announce.
    win::CriticalSection m_lock;
    CMuxInterStream* m_awaited QRX_GUARDED_BY(m_lock) = nullptr; // the one that is announced
    bool m_allAwaited QRX_GUARDED_BY(m_lock) = false;            // or all of them are
    size_t m_nextToAwait QRX_GUARDED_BY(m_lock) = 0;             // the stream that producers look at next
    size_t m_leftToAwait QRX_GUARDED_BY(m_lock) = 0;             // streams that they have not seen in this sleep
    size_t m_roomsAwaited QRX_GUARDED_BY(m_lock) = 0;            // streams that announce a wait for room
    win::ConditionVariable m_worker QRX_GUARDED_BY(m_lock);      // where GetNextPacket sleeps
};

#include "mux/mux_interleaver.h"

#include <algorithm>
#include <cstdint>

#include "log/logger.h"

namespace {

// How long a producer that waits without limit sleeps at a time.
constexpr DWORD kRoomSleepMs = 20;

void LogOfStream(const WCHAR* text, const CMuxInterStream& stream) {
    LogIfPossible([&] { g_Logger << text << static_cast<INT32>(stream.Index()) << OLESTR("\r\n"); });
}

} // namespace

CMuxInterStream* CMuxInterleaver::AddStream() {
    m_streams.push_back(std::make_unique<CMuxInterStream>(static_cast<UINT32>(m_streams.size())));
    m_order.Add(*m_streams.back());
    return m_streams.back().get();
}

void CMuxInterleaver::ClearStreams() {
    {
        const win::LockGuard lock(m_lock);
        m_roomsAwaited = 0; // nobody sleeps any more
    }
    m_order.Clear();
    m_newestTaken = kNothingTaken;
    m_streams.clear();
}

CMuxInterStream* CMuxInterleaver::StreamAt(INT32 index) const {
    if (index < 0 || static_cast<size_t>(index) >= m_streams.size()) {
        return nullptr;
    }
    return m_streams[static_cast<size_t>(index)].get();
}

void CMuxInterleaver::SetStop() {
    const win::LockGuard lock(m_lock);
    m_stopEvent.Set();
    m_worker.WakeAll();
    for (const auto& stream : m_streams) {
        stream->Producers().WakeAll();
    }
}

void CMuxInterleaver::ResetStop() {
    const win::LockGuard lock(m_lock);
    m_stopEvent.Reset();
}

// ---- Producers --------------------------------------------------------------------------------------------------

CMuxInterleaver::RoomWait CMuxInterleaver::WaitForRoom(CMuxInterStream& stream, DWORD timeoutMs) {
    if (stream.HasRoom()) {
        return RoomWait::Writable;
    }
    const win::LockGuard lock(m_lock);
    AwaitRoom(stream);
    if (!stream.IsWritable() && !m_stopEvent.IsSet()) {
        stream.Producers().Sleep(m_lock, timeoutMs);
    }
    if (stream.IsWritable()) {
        return RoomWait::Writable;
    }
    return m_stopEvent.IsSet() ? RoomWait::Stopping : RoomWait::TimedOut;
}

int CMuxInterleaver::NewPacket(INT32 streamIndex, std::unique_ptr<CMuxInterPacket>& packet) {
    packet.reset();
    CMuxInterStream* const stream = StreamAt(streamIndex);
    if (stream == nullptr) {
        return kMuxFailed;
    }
    // Room alone does not always wake it (WakeProducers).
    while (WaitForRoom(*stream, kRoomSleepMs) == RoomWait::TimedOut) {
    }
    if (m_stopEvent.IsSet()) {
        return kMuxFailed;
    }
    packet = stream->Packets().Take(streamIndex);
    return kMuxOk;
}

int CMuxInterleaver::AddPacket(std::unique_ptr<CMuxInterPacket> packet) {
    CMuxInterStream* const stream = packet == nullptr ? nullptr : StreamAt(packet->streamIndex);
    if (stream == nullptr) {
        return kMuxFailed;
    }
    if (!m_dataEvent.IsSet()) {
        m_dataEvent.Set();
    }
    stream->Append(std::move(packet));
    if (stream->IsAwaited()) {
        WakeWorker(*stream);
    }
    return kMuxOk;
}

// While a stream is awaited and the lock is held, the worker sleeps.
void CMuxInterleaver::WakeWorker(CMuxInterStream& stream) {
    const win::LockGuard lock(m_lock);
    if (!stream.IsAwaited()) {
        return; // somebody else was here
    }
    if (!AwaitAnother()) {
        AwaitNone();
        m_worker.WakeAll();
    }
}

// The producer looks in the worker's place, which is woken only when it will find something. False when no stream is
// empty that must be waited for. While the worker sleeps nothing is taken and nothing suspended, so what was seen here
// to have packets still has them: one look at each stream does for the whole sleep, however many producers come by.
bool CMuxInterleaver::AwaitAnother() {
    while (m_leftToAwait > 0) {
        CMuxInterStream& stream = *m_streams[m_nextToAwait];
        m_nextToAwait = m_nextToAwait + 1 < m_streams.size() ? m_nextToAwait + 1 : 0;
        --m_leftToAwait;
        if (!stream.IsActive() || !stream.MustBeWaitedFor()) {
            continue;
        }
        Await(stream);
        if (stream.IsEmpty()) { // asked once more: whoever appends from here on sees the announcement
            return true;
        }
    }
    return false;
}

// ---- The worker -------------------------------------------------------------------------------------------------

int CMuxInterleaver::GetNextPacket(std::unique_ptr<CMuxInterPacket>& packet, DWORD timeoutMs) {
    packet.reset();
    int result = TakeNow(packet);
    if (result == kMuxFailed) {
        result = SleepAndTake(packet, timeoutMs);
    }
    if (result == kMuxOk) {
        CMuxInterStream& stream = *m_streams[static_cast<size_t>(packet->streamIndex)];
        CountTaken(stream, *packet);
        OfferRoom(stream);
    }
    return result;
}

void CMuxInterleaver::CountTaken(CMuxInterStream& stream, const CMuxInterPacket& packet) {
    if (stream.CountTaken(packet, m_newestTaken)) {
        LogOfStream(OLESTR("CMuxInterleaver::GetNextPacket stream is back, stream="), stream);
    }
    m_newestTaken = std::max(m_newestTaken, packet.start);
}

int CMuxInterleaver::TakeNow(std::unique_ptr<CMuxInterPacket>& packet) {
    if (m_stopEvent.IsSet()) {
        return kMuxStopping;
    }
    const int result = m_dataEvent.IsSet() ? m_order.Choose() : kMuxFailed;
    if (result == kMuxOk) {
        packet = m_order.TakeChosen();
    }
    return result;
}

// A producer is woken when it is worth it, and otherwise before this thread sleeps; it looks itself now and then.
void CMuxInterleaver::OfferRoom(CMuxInterStream& stream) {
    if (stream.IsRoomAwaited() && stream.HasMuchRoom()) {
        const win::LockGuard lock(m_lock);
        WakeProducers(stream);
    }
}

// ---- What the worker announces before it sleeps -----------------------------------------------------------------

// As a rule one stream, so that neither the worker nor a producer walks over all of them for each sleep.
void CMuxInterleaver::Await(CMuxInterStream& stream) {
    if (m_awaited != &stream) {
        AwaitNone();
        m_awaited = &stream;
        stream.SetAwaited(true);
    }
}

void CMuxInterleaver::AwaitAll() {
    AwaitNone();
    m_allAwaited = true;
    for (const auto& stream : m_streams) {
        stream->SetAwaited(true);
    }
}

void CMuxInterleaver::AwaitNone() {
    if (m_awaited != nullptr) {
        m_awaited->SetAwaited(false);
        m_awaited = nullptr;
    }
    if (m_allAwaited) {
        m_allAwaited = false;
        for (const auto& stream : m_streams) {
            stream->SetAwaited(false);
        }
    }
}

// ---- Sleeping ---------------------------------------------------------------------------------------------------

int CMuxInterleaver::SleepAndTake(std::unique_ptr<CMuxInterPacket>& packet, DWORD timeoutMs) {
    const win::LockGuard lock(m_lock);
    const UINT64 deadline = m_clock.Now() + timeoutMs;
    for (;;) {
        const int result = TakeOrAwait(packet);
        const bool inTime = result != kMuxFailed || SleepUntil(deadline);
        AwaitNone();
        if (result != kMuxFailed) {
            return result;
        }
        if (m_stopEvent.IsSet()) {
            return kMuxStopping;
        }
        if (!inTime || m_clock.Now() > deadline) {
            return kMuxFailed;
        }
    }
}

// Fails only when what is missing had been announced before it was looked for; nothing that is known announces all.
int CMuxInterleaver::TakeOrAwait(std::unique_ptr<CMuxInterPacket>& packet) {
    for (;;) {
        CMuxInterStream* const awaited = m_order.Missing();
        awaited == nullptr ? AwaitAll() : Await(*awaited);
        const int result = TakeNow(packet);
        if (result != kMuxFailed || m_order.Missing() == awaited || awaited == nullptr) {
            return result;
        }
    }
}

// False when the deadline came first.
bool CMuxInterleaver::SleepUntil(UINT64 deadline) {
    const UINT64 now = m_clock.Now();
    if (now >= deadline) {
        return false;
    }
    m_nextToAwait = m_awaited == nullptr ? 0 : (m_awaited->Index() + 1) % m_streams.size();
    m_leftToAwait = m_streams.size();
    if (m_roomsAwaited > 0) {
        for (const auto& stream : m_streams) {
            if (stream->IsRoomAwaited() && stream->IsWritable()) {
                WakeProducers(*stream);
            }
        }
    }
    return m_worker.Sleep(m_lock, static_cast<DWORD>(deadline - now));
}

void CMuxInterleaver::AwaitRoom(CMuxInterStream& stream) {
    if (!stream.IsRoomAwaited()) {
        ++m_roomsAwaited;
        stream.SetRoomAwaited(true);
    }
}

void CMuxInterleaver::WakeProducers(CMuxInterStream& stream) {
    if (stream.IsRoomAwaited()) {
        --m_roomsAwaited;
        stream.SetRoomAwaited(false);
    }
    stream.Producers().WakeAll();
}

// ---- The stall breakers -----------------------------------------------------------------------------------------

bool CMuxInterleaver::IsVideoOrAudioQueueFull() const {
    return std::any_of(m_streams.begin(), m_streams.end(), [](const auto& stream) {
        return stream->Kind() < MuxStreamKind::Subtitle && !stream->IsWritable();
    });
}

void CMuxInterleaver::SuspendEmptyStreams() {
    for (const auto& stream : m_streams) {
        if (stream->IsInterleaved() && stream->IsEmpty() && stream->Suspend()) {
            LogOfStream(OLESTR("CMuxInterleaver::SuspendEmptyStreams stream is silent, stream="), *stream);
        }
    }
}

void CMuxInterleaver::ResumeSubtitles() {
    for (const auto& stream : m_streams) {
        if (stream->Kind() == MuxStreamKind::Subtitle && stream->IsSuspended()) {
            stream->WaitAgain();
        }
    }
}

UINT32 CMuxInterleaver::QueuedPacketCount() const {
    UINT32 count = 0;
    for (const auto& stream : m_streams) {
        count += static_cast<UINT32>(stream->QueuedPackets());
    }
    return count;
}

INT64 CMuxInterleaver::NewestStart() const {
    INT64 newest = INT64_MIN;
    bool any = false;
    for (const auto& stream : m_streams) {
        if (!stream->IsEmpty()) {
            newest = std::max(newest, stream->NewestStart());
            any = true;
        }
    }
    return any ? newest : 0;
}

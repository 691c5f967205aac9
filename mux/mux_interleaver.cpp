#include "mux/mux_interleaver.h"

#include <algorithm>
#include <cstdint>

CMuxInterStream* CMuxInterleaver::AddStream() {
    const win::LockGuard lock(m_lock);
    m_streams.push_back(std::make_unique<CMuxInterStream>(static_cast<UINT32>(m_streams.size()), &m_lock));
    return m_streams.back().get();
}

void CMuxInterleaver::ClearStreams() {
    const win::LockGuard lock(m_lock);
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

CMuxInterleaver::RoomWait CMuxInterleaver::WaitForRoom(CMuxInterStream& stream, DWORD timeoutMs) {
    if (stream.IsWritable()) {
        return RoomWait::Writable;
    }
    const win::LockGuard lock(m_lock);
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
    while (WaitForRoom(*stream, INFINITE) == RoomWait::TimedOut) {
        // Woken for nothing.
    }
    if (m_stopEvent.IsSet()) {
        return kMuxFailed;
    }
    packet = std::make_unique<CMuxInterPacket>(streamIndex);
    return kMuxOk;
}

int CMuxInterleaver::AddPacket(std::unique_ptr<CMuxInterPacket> packet) {
    const win::LockGuard lock(m_lock);
    CMuxInterStream* const stream = packet == nullptr ? nullptr : StreamAt(packet->streamIndex);
    if (stream == nullptr) {
        return kMuxFailed;
    }
    stream->Append(std::move(packet));
    m_dataEvent.Set();
    // The producer looks in the worker's place, which is woken only when it will find something.
    CMuxInterStream* chosen = nullptr;
    if (m_worker.HasSleepers() && Choose(chosen) != kMuxFailed) {
        m_worker.WakeAll();
    }
    return kMuxOk;
}

int CMuxInterleaver::GetNextPacket(std::unique_ptr<CMuxInterPacket>& packet, DWORD timeoutMs) {
    packet.reset();
    const win::LockGuard lock(m_lock);
    const UINT64 deadline = m_clock.Now() + timeoutMs;
    bool mustSleep = !m_dataEvent.IsSet();
    for (;;) {
        const bool timedOut = mustSleep && !m_stopEvent.IsSet() && !SleepUntil(deadline);
        if (m_stopEvent.IsSet()) {
            return kMuxStopping;
        }
        if (timedOut || m_clock.Now() > deadline) {
            return kMuxFailed;
        }
        const int result = m_dataEvent.IsSet() ? TakeEarliest(packet) : kMuxFailed;
        if (result != kMuxFailed) {
            return result;
        }
        mustSleep = true;
    }
}

// False when the deadline came first.
bool CMuxInterleaver::SleepUntil(UINT64 deadline) {
    const UINT64 now = m_clock.Now();
    if (now >= deadline) {
        return false;
    }
    return m_worker.Sleep(m_lock, static_cast<DWORD>(deadline - now));
}

// kMuxOk and the stream whose front is next, kMuxAllEnded, or kMuxFailed while nothing may be chosen.
int CMuxInterleaver::Choose(CMuxInterStream*& chosen) const {
    chosen = nullptr;
    bool mayChoose = true;
    bool allEnded = true;
    for (const auto& stream : m_streams) {
        if (!stream->IsActive() || stream->HasEnded()) {
            continue;
        }
        allEnded = false;
        if (stream->MustBeWaitedFor()) {
            mayChoose = false;
        }
        // Strictly earlier only, so that the lower index wins a tie.
        if (!stream->IsEmpty() && (chosen == nullptr || stream->OldestStart() < chosen->OldestStart())) {
            chosen = stream.get();
        }
    }
    if (allEnded) {
        return kMuxAllEnded;
    }
    return chosen != nullptr && mayChoose ? kMuxOk : kMuxFailed;
}

int CMuxInterleaver::TakeEarliest(std::unique_ptr<CMuxInterPacket>& packet) {
    CMuxInterStream* chosen = nullptr;
    const int result = Choose(chosen);
    if (result == kMuxOk) {
        packet = chosen->TakeFront();
    }
    return result;
}

bool CMuxInterleaver::IsVideoOrAudioQueueFull() const {
    const win::LockGuard lock(m_lock);
    return std::any_of(m_streams.begin(), m_streams.end(), [](const auto& stream) {
        return stream->Kind() < MuxStreamKind::Subtitle && !stream->IsWritable();
    });
}

void CMuxInterleaver::SuspendEmptyStreams() {
    const win::LockGuard lock(m_lock);
    for (const auto& stream : m_streams) {
        if (stream->IsInterleaved() && stream->IsEmpty()) {
            stream->Suspend();
        }
    }
}

void CMuxInterleaver::ResumeSubtitles() {
    const win::LockGuard lock(m_lock);
    for (const auto& stream : m_streams) {
        if (stream->Kind() == MuxStreamKind::Subtitle && stream->IsSuspended()) {
            stream->WaitAgain();
        }
    }
}

UINT32 CMuxInterleaver::QueuedPacketCount() const {
    const win::LockGuard lock(m_lock);
    UINT32 count = 0;
    for (const auto& stream : m_streams) {
        count += static_cast<UINT32>(stream->QueuedPackets());
    }
    return count;
}

INT64 CMuxInterleaver::NewestStart() const {
    const win::LockGuard lock(m_lock);
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

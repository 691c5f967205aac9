#include "mux/stall_breaker.h"

#include "log/logger.h"

namespace {

constexpr UINT32 kSnapshotAfterMs = 1000;
constexpr UINT32 kSuspendAfterMs = 2000;

} // namespace

void CStallBreaker::OnTimeout() {
    ++m_timeouts;
    BreakFullQueueStall();
    TakeSnapshot();
    BreakSilentStall();
}

// A full video or audio queue blocks its producer, so nothing that is waited for may ever come.
void CStallBreaker::BreakFullQueueStall() {
    if (!m_interleaver.IsVideoOrAudioQueueFull()) {
        return;
    }
    LogIfPossible(
        [] { g_Logger << OLESTR("interleaver.isVideoOrAudioQueueFull()Reseting inerleave on empty  streams\r\n"); });
    m_interleaver.SuspendEmptyStreams();
    m_resumeTime = m_interleaver.NewestStart();
}

void CStallBreaker::TakeSnapshot() {
    if (m_timeouts * kTakeTimeoutMs >= kSnapshotAfterMs && m_snapshot == kNoSnapshot) {
        m_snapshot = m_interleaver.QueuedPacketCount();
    }
}

// Packets wait, and none has been added for a second: whoever feeds the empty streams has stopped doing so.
void CStallBreaker::BreakSilentStall() {
    if (m_timeouts * kTakeTimeoutMs < kSuspendAfterMs) {
        return;
    }
    m_timeouts = 0;
    if (m_snapshot != 0 && m_interleaver.QueuedPacketCount() == m_snapshot) {
        m_interleaver.SuspendEmptyStreams();
        m_snapshot = kNoSnapshot;
    }
}

// Only subtitles come back this way; other streams do when their next packet is queued. On purpose.
void CStallBreaker::OnPacketTaken(const CMuxInterPacket& packet) {
    if (m_resumeTime != kNoResumeTime && packet.start >= m_resumeTime) {
        m_interleaver.ResumeSubtitles();
        m_resumeTime = kNoResumeTime;
    }
    OnProgress();
}

void CStallBreaker::OnProgress() {
    m_timeouts = 0;
    m_snapshot = kNoSnapshot;
}

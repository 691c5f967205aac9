// CStallBreaker: notices that the interleaver waits for streams that give nothing, and stops the waiting.
//
// Units: milliseconds of waiting as counted (one timeout each), not measured; start times in 100 ns.
// Owner: one run of the worker's loop. Threads: the worker.
#pragma once

#include <limits>

#include "mux/mux_interleaver.h"
#include "win/platform.h"

class CStallBreaker {
  public:
    // How long each attempt to take a packet may last.
    static constexpr DWORD kTakeTimeoutMs = 40;

    explicit CStallBreaker(CMuxInterleaver& interleaver) : m_interleaver(interleaver) {}

    // After an attempt that found nothing in time.
    void OnTimeout();
    // After an attempt that took a packet, before it is processed.
    void OnPacketTaken(const CMuxInterPacket& packet);
    // After any other attempt.
    void OnProgress();

  private:
    static constexpr UINT32 kNoSnapshot = std::numeric_limits<UINT32>::max();
    static constexpr INT64 kNoResumeTime = -1;

    void BreakFullQueueStall();
    void TakeSnapshot();
    void BreakSilentStall();

    CMuxInterleaver& m_interleaver;
    UINT32 m_timeouts = 0; // in a row
    UINT32 m_snapshot = kNoSnapshot;
    INT64 m_resumeTime = kNoResumeTime;
};

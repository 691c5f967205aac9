// The worker thread: takes packets in time order and hands them to the concrete muxer.
#include "dshow/com_guard.h"
#include "log/logger.h"
#include "mux/base_mux.h"
#include "mux/stall_breaker.h"
#include "mux/worker_request.h"

namespace {

constexpr DWORD kThreadResult = 0xFFFFFFFF; // a bare -1, as the thread's result always is

} // namespace

DWORD CBaseMux::ThreadProc() {
    for (;;) {
        const DWORD request = GetRequest();
        const bool known = request == kWorkerExit || request == kWorkerIdle || request == kWorkerRun;
        Reply(known ? kWorkerDone : kWorkerRefused);
        if (request == kWorkerExit) {
            return kThreadResult;
        }
        if (request == kWorkerRun) {
            // A loop that throws has ended; the thread stays to answer the exit request.
            (void)ComGuard([this] {
                RunMuxLoop();
                return S_OK;
            });
        }
    }
}

void CBaseMux::RunMuxLoop() {
    StallBreaker stallBreaker(m_interleaver);
    DWORD pendingRequest = 0;
    while (!CheckRequest(&pendingRequest)) {
        std::unique_ptr<CMuxInterPacket> packet;
        const int result = m_interleaver.GetNextPacket(packet, StallBreaker::kTakeTimeoutMs);
        if (result == kMuxStopping) {
            return;
        }
        if (result == kMuxAllEnded) {
            FinishRun();
            return;
        }
        if (result == kMuxFailed) {
            stallBreaker.OnTimeout();
            continue;
        }
        stallBreaker.OnPacketTaken(*packet);
        DeliverPacket(*packet);
    }
}

// What a concrete muxer throws ends its stream: the upstream filter is told by its next sample.
void CBaseMux::DeliverPacket(CMuxInterPacket& packet) {
    CMuxInterStream* const stream = m_interleaver.StreamAt(packet.streamIndex);
    const HRESULT thrown = ComGuard([&] {
        ProcessPacket(&packet, stream->Pin());
        return S_OK;
    });
    if (FAILED(thrown)) {
        stream->SetStreamResult(thrown);
    }
}

// The file is finished when streaming stops, not here.
void CBaseMux::FinishRun() {
    if (!m_outputPin || !m_outputPin->IsConnected()) {
        NotifyEvent(EC_COMPLETE, S_OK, 0);
        return;
    }
    g_Logger << OLESTR("CBaseMux::ThreadProc output->DeliverEndOfStream\r\n");
    m_outputPin->DeliverEndOfStream();
}

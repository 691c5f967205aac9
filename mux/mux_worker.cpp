#include "mux/mux_worker.h"

#include <utility>

#include "dshow/com_guard.h"
#include "mux/stall_breaker.h"
#include "mux/worker_request.h"

namespace {

constexpr DWORD kThreadResult = 0xFFFFFFFF; // a bare -1, as the thread's result always is

} // namespace

HRESULT CMuxWorker::StartWorker() {
    m_bannedLock.AssertHeld();
    if (ThreadExists()) {
        return S_OK;
    }
    if (!Create()) {
        return E_FAIL;
    }
    CallWorker(kWorkerRun);
    return S_OK;
}

void CMuxWorker::StopWorker() {
    if (ThreadExists()) {
        CallWorker(kWorkerExit);
        Close();
    }
}

DWORD CMuxWorker::ThreadProc() {
    const win::ThreadScope here(m_workerThread);
    const win::LockBan neverHere(m_bannedLock);
    for (;;) {
        const DWORD request = GetRequest();
        const bool known = request == kWorkerExit || request == kWorkerIdle || request == kWorkerRun;
        Reply(known ? kWorkerDone : kWorkerRefused);
        if (request == kWorkerExit) {
            return kThreadResult;
        }
        if (request == kWorkerRun) {
            // A loop that throws has ended; the thread stays to answer the exit request.
            const HRESULT hr = ComGuard([this] {
                m_workerThread.AssertHere();
                RunMuxLoop();
                return S_OK;
            });
            if (FAILED(hr)) {
                OnLoopFailed(hr);
            }
        }
    }
}

void CMuxWorker::RunMuxLoop() {
    CStallBreaker stallBreaker(m_workerInterleaver);
    while (!CheckRequest(nullptr)) {
        std::unique_ptr<CMuxInterPacket> packet;
        const int result = m_workerInterleaver.GetNextPacket(packet, CStallBreaker::kTakeTimeoutMs);
        if (result == kMuxStopping) {
            return;
        }
        if (result == kMuxAllEnded) {
            OnAllEnded();
            return;
        }
        if (result == kMuxFailed) {
            stallBreaker.OnTimeout();
            continue;
        }
        stallBreaker.OnPacketTaken(*packet);
        DeliverPacket(std::move(packet));
    }
}

// What a concrete muxer throws ends its stream: the upstream filter is told by its next sample.
void CMuxWorker::DeliverPacket(std::unique_ptr<CMuxInterPacket> packet) {
    CMuxInterStream* const stream = m_workerInterleaver.StreamAt(packet->streamIndex);
    const HRESULT thrown = ComGuard([&] {
        m_workerThread.AssertHere();
        OnPacket(*packet, stream->Pin());
        return S_OK;
    });
    if (FAILED(thrown)) {
        stream->SetStreamResult(thrown);
    }
    stream->Packets().GiveBack(std::move(packet));
}

// CMuxWorker: the one thread that takes the packets out of the interleaver in time order, and its requests.
//
// Owner: the filter, which derives from it; it ends every wait of the thread and then stops it before the interleaver
// goes. Threads: start and stop under the filter lock; the hooks on the worker alone, which never takes the filter
// lock, since whoever stops it waits for it under that lock. Debug and sanitizer builds assert both.
// Errors: what a hook throws ends its stream or the loop, never the thread.
#pragma once

#include <memory>

#include "dshow/am_thread.h"
#include "mux/mux_interleaver.h"
#include "win/thread_checker.h"

class CBaseMuxInputPin;

class CMuxWorker : protected CAMThread {
  protected:
    CMuxWorker(CMuxInterleaver& interleaver, CCritSec& filterLock)
        : m_workerInterleaver(interleaver), m_bannedLock(filterLock) {}

    // Creates the thread and lets it run, unless it is there. E_FAIL when there can be none.
    HRESULT StartWorker();
    // Returns when the thread has ended.
    void StopWorker();

    // One packet that was taken, and the pin that it came from. It goes back to its stream afterwards. What this throws
    // becomes the stream's result.
    virtual void OnPacket(CMuxInterPacket& packet, CBaseMuxInputPin* pin) QRX_REQUIRES(m_workerThread) = 0;
    // Once a run: every stream has given all that it will ever give.
    virtual void OnAllEnded() QRX_REQUIRES(m_workerThread) = 0;
    // Instead of that, when taking or passing on threw something: no packet is taken from here on.
    virtual void OnLoopFailed(HRESULT failure) QRX_REQUIRES(m_workerThread) = 0;

    // CAMThread
    DWORD ThreadProc() override;

    win::ThreadChecker m_workerThread;

  private:
    void RunMuxLoop() QRX_REQUIRES(m_workerThread);
    void DeliverPacket(std::unique_ptr<CMuxInterPacket> packet) QRX_REQUIRES(m_workerThread);

    CMuxInterleaver& m_workerInterleaver; // not owned
    CCritSec& m_bannedLock;               // not owned; the filter lock
};

// CAMThread: one worker thread and its request protocol: CallWorker hands over a request and waits for the reply.
//
// Owner: the derived object, whose destructor must end the worker; Close joins it and closes the handle.
// Threads: CallWorker, Create, Close from any client; GetRequest, CheckRequest, Reply from the worker only.
// Errors: no exception leaves the thread. CallWorker answers E_FAIL when no worker is there to reply.
#pragma once

#include <atomic>

#include "dshow/am_event.h"
#include "dshow/crit_sec.h"
#include "win/handle.h"
#include "win/platform.h"

class CAMThread {
  public:
    explicit CAMThread(HRESULT* phr = nullptr);
    virtual ~CAMThread();
    CAMThread(const CAMThread&) = delete;
    CAMThread& operator=(const CAMThread&) = delete;

    // FALSE if the thread exists already or cannot be created.
    BOOL Create();
    // Waits without limit for the thread to end, then forgets it. It does not ask it to end.
    void Close() QRX_EXCLUDES(m_handleLock);
    // From Create to Close, whether or not the procedure still runs.
    BOOL ThreadExists() const { return m_exists ? TRUE : FALSE; }

    // Sends a request and returns the worker's reply. Requests are served one at a time.
    DWORD CallWorker(DWORD dwParam);

    // Waits without limit for the next request. It stays pending until Reply.
    DWORD GetRequest();
    // Whether a request is pending; makes no kernel call.
    BOOL CheckRequest(DWORD* pParam);
    void Reply(DWORD dw);

    // Set while a request is pending, for workers that wait on several things.
    HANDLE GetRequestHandle() const { return m_EventSend; }
    DWORD GetRequestParam() const { return m_dwParam; }

    // Every worker enters COM's multithreaded apartment before its procedure runs.
    static HRESULT CoInitializeHelper();

    CCritSec m_AccessLock; // one client at a time
    CCritSec m_WorkerLock; // for the derived class's shared data

  protected:
    virtual DWORD ThreadProc() = 0;

  private:
    static DWORD WINAPI InitialThreadProc(LPVOID pv);
    DWORD RunThreadProc() noexcept;
    HANDLE ThreadHandle();

    CAMEvent m_EventSend;     // manual reset: set while a request is pending
    CAMEvent m_EventComplete; // auto reset: the reply is there
    CCritSec m_handleLock;
    win::KernelHandle m_hThread QRX_GUARDED_BY(m_handleLock);
    std::atomic<bool> m_exists{false};
    std::atomic<bool> m_pending{false};
    std::atomic<DWORD> m_dwParam{0};
    std::atomic<DWORD> m_dwReturnVal{0};
};

#include "dshow/am_thread.h"

#include "win/com_apartment.h"

CAMThread::CAMThread(HRESULT* phr) : m_EventSend(TRUE, phr), m_EventComplete(FALSE, phr) {}

CAMThread::~CAMThread() {
    Close();
}

BOOL CAMThread::Create() {
    const CAutoLock lock(&m_AccessLock);
    const bool canTalk = m_EventSend != nullptr && m_EventComplete != nullptr;
    if (ThreadExists() || !canTalk) {
        return FALSE;
    }
    win::KernelHandle thread(CreateThread(nullptr, 0, InitialThreadProc, this, 0, nullptr));
    if (!thread) {
        return FALSE;
    }
    const CAutoLock handleLock(&m_handleLock);
    m_hThread = std::move(thread);
    m_exists = true;
    return TRUE;
}

void CAMThread::Close() {
    win::KernelHandle thread;
    {
        const CAutoLock handleLock(&m_handleLock);
        thread = std::move(m_hThread);
    }
    if (!thread) {
        return;
    }
    WaitForSingleObject(thread.Get(), INFINITE);
    // A client that still waits for a reply looks at the handle; it leaves now that the thread has ended.
    const CAutoLock lock(&m_AccessLock);
    thread.Reset();
    m_exists = false;
}

DWORD CAMThread::CallWorker(DWORD dwParam) {
    const CAutoLock lock(&m_AccessLock); // held across the wait: one request at a time is the protocol
    const HANDLE thread = ThreadHandle();
    if (thread == nullptr) {
        return static_cast<DWORD>(E_FAIL);
    }
    m_dwParam = dwParam;
    m_pending = true;
    m_EventSend.Set();

    const HANDLE handles[] = {m_EventComplete, thread};
    if (WaitForMultipleObjects(2, handles, FALSE, INFINITE) == WAIT_OBJECT_0) {
        return m_dwReturnVal;
    }
    // The thread ended without a reply.
    m_pending = false;
    m_EventSend.Reset();
    return static_cast<DWORD>(E_FAIL);
}

DWORD CAMThread::GetRequest() {
    m_EventSend.Wait();
    return m_dwParam;
}

BOOL CAMThread::CheckRequest(DWORD* pParam) {
    if (!m_pending) {
        return FALSE;
    }
    if (pParam != nullptr) {
        *pParam = m_dwParam;
    }
    return TRUE;
}

void CAMThread::Reply(DWORD dw) {
    if (!m_pending) {
        return; // nobody waits: a reply kept for later would answer the next request
    }
    m_dwReturnVal = dw;
    m_EventSend.Reset();
    m_pending = false;
    m_EventComplete.Set();
}

HRESULT CAMThread::CoInitializeHelper() {
    return CoInitializeEx(nullptr, COINIT_MULTITHREADED | COINIT_DISABLE_OLE1DDE);
}

HANDLE CAMThread::ThreadHandle() {
    const CAutoLock handleLock(&m_handleLock);
    return m_hThread.Get();
}

DWORD WINAPI CAMThread::InitialThreadProc(LPVOID pv) {
    const win::ComApartment apartment(CoInitializeHelper()); // the multithreaded one
    return static_cast<CAMThread*>(pv)->RunThreadProc();
}

DWORD CAMThread::RunThreadProc() noexcept {
    try {
        return ThreadProc();
    } catch (...) {
        return static_cast<DWORD>(E_UNEXPECTED);
    }
}

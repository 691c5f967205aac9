// CAMEvent: one event of the system.
//
// Units: milliseconds. Owner: the handle is closed with the object. Threads: any.
// Errors: a handle that cannot be had is reported through phr; Wait and Check then answer FALSE.
#pragma once

#include "win/handle.h"
#include "win/platform.h"

class CAMEvent {
  public:
    explicit CAMEvent(HRESULT* phr);
    explicit CAMEvent(BOOL fManualReset = FALSE, HRESULT* phr = nullptr);

    operator HANDLE() const { return m_hEvent.Get(); }
    void Set() { SetEvent(m_hEvent.Get()); }
    void Reset() { ResetEvent(m_hEvent.Get()); }
    // Whether the event was set within the time.
    BOOL Wait(DWORD dwTimeout = INFINITE) { return WaitForSingleObject(m_hEvent.Get(), dwTimeout) == WAIT_OBJECT_0; }
    BOOL Check() { return Wait(0); }

  protected:
    win::KernelHandle m_hEvent;
};

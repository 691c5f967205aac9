// CCritSec and CAutoLock: a recursive lock, and a scope that holds it.
//
// Threads: any. An uncontended lock makes no kernel call.
#pragma once

#include "win/critical_section.h"

class CCritSec : public win::CriticalSection {
  public:
    void Lock() { lock(); }
    void Unlock() { unlock(); }
};

class CAutoLock {
  public:
    explicit CAutoLock(CCritSec* lock) : m_pLock(lock) { m_pLock->Lock(); }
    ~CAutoLock() { m_pLock->Unlock(); }
    CAutoLock(const CAutoLock&) = delete;
    CAutoLock& operator=(const CAutoLock&) = delete;

  protected:
    CCritSec* m_pLock; // not owned
};

// CCritSec and CAutoLock: the recursive lock and the scope that holds it, under their published names.
//
// Threads: any. An uncontended lock makes no kernel call.
#pragma once

#include "win/critical_section.h"

class QRX_CAPABILITY("lock") CCritSec : public win::CriticalSection {
  public:
    void Lock() QRX_ACQUIRE() { lock(); }
    void Unlock() QRX_RELEASE() { unlock(); }
};

class QRX_SCOPED_CAPABILITY CAutoLock : public win::LockGuard {
  public:
    // The analysis sees the base do what these two declare.
    explicit CAutoLock(CCritSec* lock) QRX_ACQUIRE(lock) QRX_NO_ANALYSIS : LockGuard(*lock) {}
    ~CAutoLock() QRX_RELEASE() QRX_NO_ANALYSIS {}
};

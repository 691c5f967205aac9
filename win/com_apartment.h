// ComApartment: a thread's stay in a COM apartment, from what entering it answered.
//
// Owner: the thread that entered. Another thread may destroy it, and then gives nothing back: that COM is not its own.
// Errors: a stay that was refused is none, and nothing is given back; so is that of a thread in another kind of
// apartment.
#pragma once

#include "win/platform.h"

namespace win {

class ComApartment {
  public:
    explicit ComApartment(HRESULT entered) : m_entered(entered), m_threadId(GetCurrentThreadId()) {}
    ~ComApartment() {
        if (SUCCEEDED(m_entered) && GetCurrentThreadId() == m_threadId) {
            CoUninitialize();
        }
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

    [[nodiscard]] HRESULT Entered() const { return m_entered; }

  private:
    const HRESULT m_entered;
    const DWORD m_threadId;
};

} // namespace win

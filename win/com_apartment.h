// ComApartment: a thread's stay in a COM apartment, from what entering it answered.
//
// Owner: the thread that entered. Errors: a stay that was refused is none, and nothing is given back.
#pragma once

#include "win/platform.h"

namespace win {

class ComApartment {
  public:
    explicit ComApartment(HRESULT entered) : m_entered(entered) {}
    ~ComApartment() {
        if (SUCCEEDED(m_entered)) {
            CoUninitialize();
        }
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

    [[nodiscard]] HRESULT Entered() const { return m_entered; }

  private:
    const HRESULT m_entered;
};

} // namespace win

// OwnedBytes: bytes with an owner that may be handed on, and that go back where they came from: to a pool that uses
// them again, or to the heap.
//
// Owner: whoever holds it; a home outlives all that it gave. Threads: given back by any thread, one at a time.
#pragma once

#include <memory>

#include "win/platform.h"

namespace win {

class ByteHome {
  public:
    // Called once for each array that the home gave, from whichever thread let it go.
    virtual void TakeBack(BYTE* bytes) noexcept = 0;

  protected:
    ~ByteHome() = default;
};

// What std::make_unique made has no home and is freed.
class ByteReturn {
  public:
    ByteReturn() = default;
    // Not explicit, so that a std::unique_ptr converts.
    ByteReturn(std::default_delete<BYTE[]>) {}
    explicit ByteReturn(ByteHome& home) : m_home(&home) {}

    void operator()(BYTE* bytes) const noexcept {
        if (m_home != nullptr) {
            m_home->TakeBack(bytes);
        } else {
            std::default_delete<BYTE[]>()(bytes);
        }
    }

  private:
    ByteHome* m_home = nullptr; // not owned
};

using OwnedBytes = std::unique_ptr<BYTE[], ByteReturn>;

} // namespace win

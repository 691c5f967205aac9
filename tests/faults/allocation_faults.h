// What this program's own operator new does: counts the product's allocations, and lets one of them fail. On Linux also
// malloc as the product's own sources and the Win32 functions below it call it (CMakeLists.txt wraps it).
//
// Threads: any; one test at a time asks. Errors: none.
#pragma once

#include <cstddef>

namespace faults {

// While it lives, the n-th allocation of the product from now on (1 is the next) fails, on whichever thread; with 0
// none.
class AllocationFault {
  public:
    explicit AllocationFault(size_t n);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    // So many were made.
    [[nodiscard]] static size_t Count();
    [[nodiscard]] bool HasStruck() const { return m_n > 0 && Count() >= m_n; }

  private:
    const size_t m_n;
};

// Blocks of operator new that nobody has deleted yet.
[[nodiscard]] size_t LiveBlocks();

} // namespace faults

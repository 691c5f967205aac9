// AllocationMeter: what a test program takes from the heap through operator new.
//
// Units: bytes. Threads: counts those of all threads. A program that uses it has operators new and delete of its own.
#pragma once

#include <cstddef>

namespace test_source {

class AllocationMeter {
  public:
    // Begins here; one at a time.
    AllocationMeter();

    // The most that was held at once, above what was held at the beginning.
    [[nodiscard]] size_t PeakBytes() const;

  private:
    size_t m_heldBefore;
};

} // namespace test_source

// UncountedSection: while it lives, the system calls of its thread belong to the benchmark and are not counted.
//
// Owner: a scope. Threads: its own. Sections may be nested.
#pragma once

namespace bench {

class UncountedSection {
  public:
    UncountedSection();
    ~UncountedSection();
    UncountedSection(const UncountedSection&) = delete;
    UncountedSection& operator=(const UncountedSection&) = delete;

    // Whether the calling thread is inside one.
    [[nodiscard]] static bool IsInside();
};

} // namespace bench

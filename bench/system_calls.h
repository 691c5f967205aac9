// SystemCallCounter: counts this program's calls of the functions that wait, wake or handle kernel objects, by putting
// counting functions into its own import table.
//
// Owner: the section that counts; one at a time. Threads: counts all of them, but for what lies inside an
// UncountedSection. Errors: std::runtime_error when the table cannot be written.
// What system libraries call among themselves is not seen, but for one thing: an EnterCriticalSection that finds the
// lock taken, and so may wait in the kernel, is counted as contended.
#pragma once

#include "bench/import_table.h"

namespace bench {

struct SystemCalls {
    UINT64 waits = 0;     // WaitForSingleObject, SleepConditionVariableCS, Sleep and their like
    UINT64 wakes = 0;     // SetEvent, WakeAllConditionVariable, ReleaseSemaphore and their like
    UINT64 objects = 0;   // kernel objects made, copied or closed
    UINT64 contended = 0; // locks that were taken

    [[nodiscard]] SystemCalls operator-(const SystemCalls& earlier) const;
};

class SystemCallCounter {
  public:
    SystemCallCounter();

    [[nodiscard]] static SystemCalls Counts();

  private:
    ImportTable m_imports;
};

} // namespace bench

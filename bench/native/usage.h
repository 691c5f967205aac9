// What a piece of work takes of the machine. Units: seconds, bytes.
#pragma once

#include <functional>

#include "win/platform.h"

namespace bench {

struct Usage {
    double wall = 0.0;
    double cpu = 0.0; // user and kernel time of all threads of this process
};

[[nodiscard]] Usage Measure(const std::function<void()>& work);
[[nodiscard]] double ProcessCpu();
// Times that the calling thread has gone to sleep so far.
[[nodiscard]] UINT64 SleepsOfThread();
// The most memory that was resident since the last call of ForgetPeak. std::runtime_error when the system does not say.
[[nodiscard]] UINT64 PeakResidentBytes();
void ForgetPeak();
// From here on what is freed stays the process's, so that no run pays for fresh pages, whichever muxer it is of.
void KeepFreedMemory();

} // namespace bench

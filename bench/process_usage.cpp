#include "bench/process_usage.h"

#include <stdexcept>

#include <psapi.h>

namespace bench {

namespace {

constexpr double kTicksPerSecond = 1e7; // of 100 ns

double SecondsOf(const FILETIME& time) {
    ULARGE_INTEGER ticks{};
    ticks.LowPart = time.dwLowDateTime;
    ticks.HighPart = time.dwHighDateTime;
    return static_cast<double>(ticks.QuadPart) / kTicksPerSecond;
}

} // namespace

double ProcessCpuSeconds() {
    FILETIME created{};
    FILETIME exited{};
    FILETIME kernel{};
    FILETIME user{};
    if (GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user) == FALSE) {
        throw std::runtime_error("GetProcessTimes failed");
    }
    return SecondsOf(kernel) + SecondsOf(user);
}

UINT64 PeakWorkingSetBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    if (GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)) == FALSE) {
        throw std::runtime_error("GetProcessMemoryInfo failed");
    }
    return counters.PeakWorkingSetSize;
}

} // namespace bench

#include "bench/native/usage.h"

#include <fstream>
#include <stdexcept>
#include <string>

#include <malloc.h>
#include <sys/resource.h>

#include "bench/stopwatch.h"

namespace bench {

namespace {

double SecondsOf(const timeval& time) {
    constexpr double kMicrosecond = 1e-6;
    return static_cast<double>(time.tv_sec) + kMicrosecond * static_cast<double>(time.tv_usec);
}

} // namespace

double ProcessCpu() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime);
}

Usage Measure(const std::function<void()>& work) {
    const double before = ProcessCpu();
    const Stopwatch watch;
    work();
    return {watch.Seconds(), ProcessCpu() - before};
}

UINT64 SleepsOfThread() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return static_cast<UINT64>(usage.ru_nvcsw);
}

UINT64 PeakResidentBytes() {
    constexpr UINT64 kBytesPerKb = 1024;
    const std::string name = "VmHWM:";
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.compare(0, name.size(), name) == 0) {
            return std::stoull(line.substr(name.size())) * kBytesPerKb;
        }
    }
    throw std::runtime_error("the peak of memory is not known");
}

void ForgetPeak() {
    malloc_trim(0); // what earlier runs gave back is none of the next one's
    std::ofstream("/proc/self/clear_refs") << "5";
}

// One arena: those of other threads give memory back whatever the threshold is.
void KeepFreedMemory() {
    constexpr int kNever = 1 << 30;
    constexpr int kLargestThreshold = 32 << 20; // that the library takes for blocks with a mapping of their own
    mallopt(M_ARENA_MAX, 1);
    mallopt(M_TRIM_THRESHOLD, kNever);
    mallopt(M_MMAP_THRESHOLD, kLargestThreshold);
}

} // namespace bench

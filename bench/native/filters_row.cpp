#include <latch>
#include <memory>
#include <stdexcept>
#include <thread>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "bench/native/recording.h"
#include "bench/native/rows.h"
#include "bench/null_stream.h"
#include "bench/stopwatch.h"

namespace bench {

namespace {

constexpr size_t kPictureBytes = 4096;

// A camera with its filter, ready to run.
struct Camera {
    explicit Camera(UINT64 seconds) : recording(seconds, kPictureBytes) {}

    Recording recording;
    PlainNullStream stream;
    MuxerJob job{Recording::Types(), [this](size_t input, UINT64 packet) { return recording.Packet(input, packet); },
                 stream};
};

Usage InOneProcess(size_t count, UINT64 seconds) {
    std::vector<std::unique_ptr<Camera>> cameras;
    for (size_t i = 0; i < count; ++i) {
        cameras.push_back(std::make_unique<Camera>(seconds));
    }
    return Measure([&] {
        std::vector<std::jthread> threads;
        for (auto& camera : cameras) {
            threads.emplace_back([&camera] { camera->job.Run(); });
        }
    });
}

double ChildrenCpu() {
    constexpr double kMicrosecond = 1e-6;
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           kMicrosecond * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// Says through one pipe that it is ready, and begins when the other one is closed.
[[noreturn]] void RunChild(UINT64 seconds, int ready, int go) {
    constexpr int kFailed = 1;
    try {
        Camera camera(seconds);
        char byte = 0;
        if (write(ready, &byte, 1) == 1 && read(go, &byte, 1) == 0) {
            camera.job.Run();
            _exit(0);
        }
    } catch (...) {
    }
    _exit(kFailed);
}

void WaitForChildren(size_t count) {
    for (size_t i = 0; i < count; ++i) {
        int status = 0;
        if (wait(&status) < 0 || status != 0) {
            throw std::runtime_error("a process of the filters' row failed");
        }
    }
}

// No other thread of this process lives when it forks.
Usage InManyProcesses(size_t count, UINT64 seconds) {
    int ready[2];
    int go[2];
    if (pipe(ready) != 0 || pipe(go) != 0) {
        throw std::runtime_error("no pipe");
    }
    for (size_t i = 0; i < count; ++i) {
        const pid_t child = fork();
        if (child < 0) {
            throw std::runtime_error("no process");
        }
        if (child == 0) {
            close(go[1]);
            RunChild(seconds, ready[1], go[0]);
        }
    }
    char byte = 0;
    for (size_t i = 0; i < count; ++i) {
        (void)!read(ready[0], &byte, 1);
    }
    const double before = ChildrenCpu();
    const Stopwatch watch;
    close(go[1]);
    WaitForChildren(count);
    const Usage usage{watch.Seconds(), ChildrenCpu() - before};
    close(go[0]);
    close(ready[0]);
    close(ready[1]);
    return usage;
}

} // namespace

void MeasureFilters(const NativePlan& plan, Report& report) {
    const UINT64 seconds = plan.quick ? 1600 : 4000; // of all cameras together
    report.Describe("filters", "packets", seconds * (Recording::kPicturesPerSecond + Recording::kSoundsPerSecond));
    for (int round = 0; round < plan.Rounds(); ++round) {
        for (const size_t count : {1U, 4U, 16U}) {
            const std::string number = std::to_string(count);
            report.Add("filters", number + " filters", InOneProcess(count, seconds / count));
            report.Add("filters", number + " processes", InManyProcesses(count, seconds / count));
        }
    }
}

} // namespace bench

// bench_mux: measures the muxer between fake sources and a fake sink, and prints tables. Nothing is judged here.
#include <cstdio>
#include <cstring>
#include <exception>

#include "bench/sections.h"
#include "bench/stopwatch.h"
#include "bench/table.h"
#include "win/platform.h"

namespace {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 2;

void PrintUsage() {
    std::puts("usage: bench_mux [--quick]     about a minute; --quick: below 20 s, with more scatter");
}

void PrintMachine(const bench::BenchPlan& plan) {
    SYSTEM_INFO info{};
    GetSystemInfo(&info);
    std::printf("bench_mux: %u processors, median of %d rounds [min..max]; MB is 10^6 bytes\n",
                static_cast<unsigned>(info.dwNumberOfProcessors), plan.rounds);
    bench::PrintNote("compare ratios: they are taken inside one round, where runs of each kind take turns");
}

void MeasureAll(const bench::BenchPlan& plan) {
    const bench::Stopwatch watch;
    PrintMachine(plan);
    bench::MeasureMemory(plan);
    bench::MeasureThroughput(plan);
    bench::MeasureFile(plan);
    bench::MeasureSystemCalls(plan);
    bench::MeasureStreamCalls();
    bench::MeasureStarvedWorker(plan);
    std::printf("\ndone in %.0f s\n", watch.Seconds());
}

} // namespace

int main(int argc, char** argv) {
    const bool quick = argc == 2 && std::strcmp(argv[1], "--quick") == 0;
    if (argc > 1 && !quick) {
        PrintUsage();
        return kExitFailed;
    }
    try {
        MeasureAll(quick ? bench::kQuickPlan : bench::kFullPlan);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench_mux: %s\n", failure.what());
        return kExitFailed;
    }
    return kExitDone;
}

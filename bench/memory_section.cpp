#include <stdexcept>

#include "bench/muxer_run.h"
#include "bench/null_stream.h"
#include "bench/process_usage.h"
#include "bench/sections.h"
#include "bench/table.h"

namespace bench {

namespace {

constexpr double kBytesPerMb = 1e6;

std::string InMb(UINT64 bytes) {
    return Number(static_cast<double>(bytes) / kBytesPerMb);
}

void AddRun(Table& table, UINT64 packets) {
    const Load load = LargeVideo(1, packets);
    PlainNullStream stream;
    static_cast<void>(MuxSeconds(load, stream));
    if (stream.Size() < load.TotalBytes()) {
        throw std::runtime_error("the file is smaller than its payload");
    }
    table.AddRow({load.name + ", 1 input", InMb(load.TotalBytes()), InMb(stream.Size()), InMb(PeakWorkingSetBytes())});
}

} // namespace

void MeasureMemory(const BenchPlan& plan) {
    PrintHeading("Memory while one file is written");
    Table table({"load", "payload MB", "file MB", "peak working set MB"});
    table.AddRow({"before the first run", "0", "0", InMb(PeakWorkingSetBytes())});
    AddRun(table, plan.shortRunPackets);
    AddRun(table, plan.longRunPackets);
    table.Print();
    PrintNote("expected: bounded by the input's queue (a video input's holds 100 MiB) and two clusters of 4 MiB, so");
    PrintNote("the longer run adds next to nothing; the peak is the process's own, since its start");
}

} // namespace bench

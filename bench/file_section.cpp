#include <stdexcept>

#include "bench/muxer_run.h"
#include "bench/null_stream.h"
#include "bench/sections.h"
#include "bench/stopwatch.h"
#include "bench/table.h"
#include "bench/temporary_file.h"
#include "mkv/cluster_rule.h"

namespace bench {

namespace {

constexpr double kBytesPerMb = 1e6;

double NullSeconds(const Load& load) {
    PlainNullStream stream;
    return MuxSeconds(load, stream);
}

double FileSeconds(const Load& load) {
    TemporaryFile file;
    const double seconds = MuxSeconds(load, file.Stream());
    if (file.Size() < load.TotalBytes()) {
        throw std::runtime_error("the file is smaller than its payload");
    }
    return seconds;
}

// As many bytes, in writes as large as a full cluster.
double BareFileSeconds(const Load& load) {
    TemporaryFile file;
    const std::vector<BYTE> piece(mkv::kMaxClusterPayloadBytes, BYTE{1});
    const Stopwatch watch;
    for (UINT64 done = 0; done < load.TotalBytes(); done += piece.size()) {
        ULONG written = 0;
        if (FAILED(file.Stream().Write(piece.data(), static_cast<ULONG>(piece.size()), &written))) {
            throw std::runtime_error("writing the file failed");
        }
    }
    return watch.Seconds();
}

} // namespace

void MeasureFile(const BenchPlan& plan) {
    PrintHeading("The same into a real file");
    const Load load = LargeVideo(1, plan.filePackets);
    std::vector<double> speed;
    std::vector<double> timesNull;
    std::vector<double> timesBare;
    for (int round = 0; round < plan.rounds; ++round) {
        const double file = FileSeconds(load);
        const double null = NullSeconds(load);
        const double bare = BareFileSeconds(load);
        speed.push_back(static_cast<double>(load.TotalBytes()) / kBytesPerMb / file);
        timesNull.push_back(file / null);
        timesBare.push_back(file / bare);
    }
    Table table({"load", "inputs", "MB/s", "[min..max]", "file/null stream", "file/plain writes", "[min..max]"});
    table.AddRow({load.name, "1", Median(SpreadOf(speed)), Range(SpreadOf(speed)), Median(SpreadOf(timesNull), 2),
                  Median(SpreadOf(timesBare), 2), Range(SpreadOf(timesBare), 2)});
    table.Print();
    PrintNote("plain writes: as many bytes through the same stream, 4 MiB at a time, without a muxer");
}

} // namespace bench

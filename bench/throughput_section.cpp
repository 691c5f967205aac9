#include <stdexcept>

#include "bench/baselines.h"
#include "bench/muxer_run.h"
#include "bench/null_stream.h"
#include "bench/one_processor.h"
#include "bench/sections.h"
#include "bench/table.h"

namespace bench {

namespace {

constexpr double kBytesPerMb = 1e6;
constexpr size_t kManyInputs = 8;

double CheckedMuxSeconds(const Load& load) {
    PlainNullStream stream;
    const double seconds = MuxSeconds(load, stream);
    if (stream.Size() < load.TotalBytes()) {
        throw std::runtime_error("the file is smaller than its payload");
    }
    return seconds;
}

double MuxSecondsOnOneProcessor(const Load& load) {
    const OneProcessor pinned;
    return CheckedMuxSeconds(load);
}

// What the rounds of one load came to.
struct Rounds {
    std::vector<double> packetsPerSecond;
    std::vector<double> megabytesPerSecond;
    std::vector<double> timesWriter;
    std::vector<double> writerTimesLibrary;
    std::vector<double> timesCopy;
    std::vector<double> timesOneProcessor;
};

void MeasureRound(const Load& load, Rounds& rounds) {
    const double mux = CheckedMuxSeconds(load);
    const double pinned = MuxSecondsOnOneProcessor(load);
    const double writer = BareWriterSeconds(load);
    const double library = BareLibrarySeconds(load);
    const double copy = CopySeconds(load);
    rounds.packetsPerSecond.push_back(static_cast<double>(load.TotalPackets()) / mux);
    rounds.megabytesPerSecond.push_back(static_cast<double>(load.TotalBytes()) / kBytesPerMb / mux);
    rounds.timesWriter.push_back(mux / writer);
    rounds.writerTimesLibrary.push_back(writer / library);
    rounds.timesCopy.push_back(mux / copy);
    rounds.timesOneProcessor.push_back(mux / pinned);
}

void AddLoad(Table& table, const Load& load, int count) {
    Rounds rounds;
    for (int round = 0; round < count; ++round) {
        MeasureRound(load, rounds);
    }
    const Spread packets = SpreadOf(rounds.packetsPerSecond);
    const Spread writer = SpreadOf(rounds.timesWriter);
    constexpr double kThousand = 1e3;
    const Spread thousands{packets.min / kThousand, packets.median / kThousand, packets.max / kThousand};
    table.AddRow({load.name, Number(static_cast<double>(load.inputs)), Median(thousands, 1), Range(thousands, 1),
                  Median(SpreadOf(rounds.megabytesPerSecond)), Median(writer, 2), Range(writer, 2),
                  Median(SpreadOf(rounds.writerTimesLibrary), 2), Median(SpreadOf(rounds.timesCopy), 1),
                  Median(SpreadOf(rounds.timesOneProcessor), 2)});
}

} // namespace

void MeasureThroughput(const BenchPlan& plan) {
    PrintHeading("From Receive to the finished file, into a stream that forgets");
    Table table({"load", "inputs", "1000 packets/s", "[min..max]", "MB/s", "muxer/writer", "[min..max]",
                 "writer/library", "muxer/memcpy", "all CPUs/one"});
    AddLoad(table, SmallAudio(1, plan.smallPackets), plan.rounds);
    AddLoad(table, SmallAudio(kManyInputs, plan.smallPackets / kManyInputs), plan.rounds);
    AddLoad(table, LargeVideo(1, plan.largePackets), plan.rounds);
    AddLoad(table, LargeVideo(kManyInputs, plan.largePackets / kManyInputs), plan.rounds);
    AddLoad(table, LargeByteStreamVideo(1, plan.largePackets), plan.rounds);
    table.Print();
    PrintNote("each input delivers from a thread of its own; the time runs from the first Receive to the end of Stop");
    PrintNote("ratios of times. writer: the same packets handed straight to the Matroska writer on one thread;");
    PrintNote("library: libmatroska alone, same clusters, rendered into a buffer; memcpy: each payload copied once");
    PrintNote("all CPUs/one: the muxer as in the first columns, and with all its threads on one processor");
}

} // namespace bench

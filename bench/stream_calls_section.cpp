#include <algorithm>
#include <stdexcept>

#include "bench/load.h"
#include "bench/muxer_setup.h"
#include "bench/producer.h"
#include "bench/sections.h"
#include "bench/table.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/memory_stream.h"

namespace bench {

namespace {

using test_support::MemoryStream;
using test_support::StreamCall;
using test_support::StreamOperation;

struct CallCounts {
    UINT64 seeks = 0;
    UINT64 writes = 0;
    UINT64 others = 0;
};

CallCounts TakeCounts(MemoryStream& stream) {
    CallCounts counts;
    for (const StreamCall& call : stream.Calls()) {
        if (call.operation == StreamOperation::Write) {
            ++counts.writes;
        } else if (call.operation == StreamOperation::Seek) {
            ++counts.seeks;
        } else {
            ++counts.others;
        }
    }
    stream.ClearCalls();
    return counts;
}

void AddCounts(Table& table, const std::string& load, const std::string& part, const CallCounts& counts, double parts) {
    table.AddRow({load, part, Number(parts), Number(static_cast<double>(counts.seeks) / parts, 2),
                  Number(static_cast<double>(counts.writes) / parts, 2),
                  Number(static_cast<double>(counts.others) / parts, 2)});
}

size_t ClustersIn(const MemoryStream& stream) {
    const auto bytes = stream.Bytes(); // the layout points into them
    return test_support::ReadLayout(bytes).clusters.size();
}

void AddLoad(Table& table, const Load& load) {
    MemoryStream stream;
    MuxerSetup setup(load, stream);
    setup.Pause();
    const CallCounts head = TakeCounts(stream);
    Producer producer(load, setup.Input(0));
    producer.Deliver(load.packetsPerInput);
    producer.DeliverEndOfStream();
    setup.WaitForEndOfStream();
    const CallCounts body = TakeCounts(stream);
    setup.Stop();
    const CallCounts finalisation = TakeCounts(stream);

    const size_t clusters = ClustersIn(stream);
    if (clusters < 2) {
        throw std::runtime_error("too few clusters to count the calls of one");
    }
    AddCounts(table, load.name, "head", head, 1);
    AddCounts(table, load.name, "clusters while streaming", body, static_cast<double>(clusters - 1));
    AddCounts(table, load.name, "last cluster and finalisation", finalisation, 1);
}

} // namespace

void MeasureStreamCalls() {
    constexpr UINT64 kVideoPackets = 2000;
    constexpr UINT64 kAudioPackets = 40000;
    PrintHeading("Calls of the downstream IStream, each");
    Table table({"load", "part of the file", "number", "Seek", "Write", "other"});
    AddLoad(table, LargeVideo(1, kVideoPackets));
    AddLoad(table, SmallAudio(1, kAudioPackets));
    table.Print();
    PrintNote("expected: one Write a cluster, and two more for each payload that leaves from where it lies; no Seek");
    PrintNote("into a MemoryStream that records; the clusters are counted by a reader of its own");
}

} // namespace bench

#include <stdexcept>

#include "bench/held_stream.h"
#include "bench/muxer_run.h"
#include "bench/muxer_setup.h"
#include "bench/null_stream.h"
#include "bench/process_usage.h"
#include "bench/producer.h"
#include "bench/sections.h"
#include "bench/table.h"

namespace bench {

namespace {

constexpr double kBytesPerMb = 1e6;

std::string InMb(UINT64 bytes) {
    return Number(static_cast<double>(bytes) / kBytesPerMb);
}

void AddRow(Table& table, const std::string& run, const Load& load, const NullStream& stream) {
    if (stream.Size() < load.TotalBytes()) {
        throw std::runtime_error("the file is smaller than its payload");
    }
    const UINT64 keyframes = (load.packetsPerInput - 1) / load.keyframeEvery + 1;
    table.AddRow({run, InMb(load.TotalBytes()), InMb(stream.Size()), Number(static_cast<double>(keyframes)),
                  InMb(PeakWorkingSetBytes())});
}

// The worker is held inside a write until the input's queue is full: the most that can be queued.
void AddFullQueue(Table& table) {
    Load load = LargeVideo(1, 0);
    const UINT64 first = load.keyframeEvery + 2; // the second keyframe ends the first cluster
    const UINT64 rest = CMuxInterStream::ByteLimitOf(MuxStreamKind::Video) / load.payload.size();
    load.packetsPerInput = first + rest;
    HeldStream stream;
    MuxerSetup setup(load, stream);
    setup.Pause();
    Producer producer(load, setup.Input(0));
    stream.HoldNextWrite();
    producer.Deliver(first);
    stream.WaitUntilHeld();
    producer.Deliver(rest);
    stream.LetGo();
    producer.DeliverEndOfStream();
    setup.WaitForEndOfStream();
    setup.Stop();
    AddRow(table, "queue full once", load, stream);
}

void AddFreeRun(Table& table, const std::string& run, const Load& load) {
    PlainNullStream stream;
    (void)MuxSeconds(load, stream);
    AddRow(table, run, load, stream);
}

Load WithOneKeyframe(Load load) {
    load.keyframeEvery = load.packetsPerInput;
    return load;
}

} // namespace

void MeasureMemory(const BenchPlan& plan) {
    PrintHeading("Memory while one file is written");
    Table table({"run", "payload MB", "file MB", "keyframes", "peak working set MB"});
    table.AddRow({"before the first run", "0", "0", "0", InMb(PeakWorkingSetBytes())});
    AddFullQueue(table);
    AddFreeRun(table, "short, one keyframe", WithOneKeyframe(LargeVideo(1, plan.shortRunPackets)));
    AddFreeRun(table, "long, one keyframe", WithOneKeyframe(LargeVideo(1, plan.longRunPackets)));
    AddFreeRun(table, "long, a keyframe a second", LargeVideo(1, plan.longRunPackets));
    table.Print();
    PrintNote(
        "one input of 64 KiB video packets, into a stream that forgets; each peak is the process's since its start");
    PrintNote(
        "expected: the queue (100 MiB for video) and two clusters of 4 MiB bound it, so the long run adds little;");
    PrintNote("each keyframe adds the cue point that is kept until the file is finished");
}

} // namespace bench

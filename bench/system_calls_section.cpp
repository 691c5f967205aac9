#include <stdexcept>

#include "bench/held_stream.h"
#include "bench/muxer_run.h"
#include "bench/muxer_setup.h"
#include "bench/producer.h"
#include "bench/sections.h"
#include "bench/system_calls.h"
#include "bench/table.h"
#include "bench/uncounted_section.h"
#include "dshow/ref_time.h"

namespace bench {

namespace {

constexpr INT64 kClusterGapTicks =
    40000 * kReferenceTimesPerMs; // longer than a cluster may be: the next packet ends it
constexpr DWORD kWorkerFallsAsleepMs = 5;
constexpr DWORD kWorkerEmptiesQueueMs = 1000;
constexpr size_t kManyInputs = 8;

void SleepUncounted(DWORD milliseconds) {
    const UncountedSection uncounted;
    Sleep(milliseconds);
}

// Only free runs are timed: the other phases wait for each other on purpose.
void AddRow(Table& table, const std::string& phase, UINT64 packets, const SystemCalls& calls,
            const std::string& microseconds = "-") {
    const auto perPacket = [packets](UINT64 count) {
        return Number(static_cast<double>(count) / static_cast<double>(packets), 4);
    };
    table.AddRow({phase, Number(static_cast<double>(packets)), Number(static_cast<double>(calls.waits)),
                  Number(static_cast<double>(calls.wakes)), Number(static_cast<double>(calls.objects)),
                  perPacket(calls.waits + calls.wakes + calls.objects), Number(static_cast<double>(calls.contended)),
                  microseconds});
}

// One audio input, whose packets are so short that a phase lies within one cluster.
Load PhaseLoad() {
    Load load = SmallAudio(1, 0);
    load.packetTicks = kReferenceTimesPerMs / 10;
    return load;
}

// One muxer led from phase to phase. Which side works when is settled by holding the worker inside a write of the
// stream, so that the phases differ in nothing else.
class Phases {
  public:
    Phases(const BenchPlan& plan, Table& table)
        : m_plan(plan), m_table(table), m_load(PhaseLoad()), m_setup(m_load, m_stream),
          m_producer(m_load, m_setup.Input(0)) {
        m_setup.Pause();
    }
    ~Phases() { m_stream.LetGo(); } // else Stop would wait for the worker
    Phases(const Phases&) = delete;
    Phases& operator=(const Phases&) = delete;

    void Run() {
        ProducerAlone();
        WorkerAlone();
        BothAtOnce();
        PingPong();
        m_producer.DeliverEndOfStream();
        m_setup.WaitForEndOfStream();
        m_setup.Stop();
    }

  private:
    // The first packet ends the cluster, and the second one has the first queued.
    void DeliverClusterEnd() {
        m_producer.SkipTime(kClusterGapTicks);
        m_producer.Deliver(2);
    }

    void HoldWorker() {
        m_stream.HoldNextWrite();
        DeliverClusterEnd();
        m_stream.WaitUntilHeld();
    }

    void ProducerAlone() {
        HoldWorker();
        const SystemCalls before = SystemCallCounter::Counts();
        m_producer.Deliver(m_plan.uncontendedPackets);
        AddRow(m_table, "producer alone: worker busy, room in the queue", m_plan.uncontendedPackets,
               SystemCallCounter::Counts() - before);
    }

    void WorkerAlone() {
        DeliverClusterEnd();
        const SystemCalls before = SystemCallCounter::Counts();
        m_stream.HoldNextWrite();
        m_stream.WaitUntilHeld();
        AddRow(m_table, "worker alone: packets in the queue", m_plan.uncontendedPackets,
               SystemCallCounter::Counts() - before);
    }

    // The worker has a backlog to write while the producer goes on, and the queue stays below its limit.
    void BothAtOnce() {
        const UINT64 packets = m_plan.uncontendedPackets / 5;
        m_producer.Deliver(m_plan.uncontendedPackets);
        const SystemCalls before = SystemCallCounter::Counts();
        m_stream.LetGo();
        m_producer.Deliver(packets);
        const SystemCalls after = SystemCallCounter::Counts();
        if (m_setup.Muxer().Interleaver().QueuedPacketCount() == 0) {
            throw std::runtime_error("the worker's backlog did not last");
        }
        AddRow(m_table, "both at once: backlog and room", packets, after - before);
    }

    void PingPong() {
        SleepUncounted(kWorkerEmptiesQueueMs);
        const SystemCalls before = SystemCallCounter::Counts();
        for (UINT64 i = 0; i < m_plan.pingPongPackets; ++i) {
            m_producer.Deliver(1);
            SleepUncounted(kWorkerFallsAsleepMs);
        }
        AddRow(m_table, "ping-pong: worker asleep before each packet", m_plan.pingPongPackets,
               SystemCallCounter::Counts() - before);
    }

    const BenchPlan& m_plan;
    Table& m_table;
    const Load m_load;
    HeldStream m_stream;
    MuxerSetup m_setup;
    Producer m_producer;
};

void FreeRun(Table& table, const std::string& phase, const Load& load) {
    PlainNullStream stream;
    const SystemCalls before = SystemCallCounter::Counts();
    const double seconds = MuxSeconds(load, stream);
    const SystemCalls calls = SystemCallCounter::Counts() - before;
    constexpr double kMicroseconds = 1e6;
    const auto packets = static_cast<double>(load.TotalPackets());
    AddRow(table, phase, load.TotalPackets(), calls, Number(kMicroseconds * seconds / packets, 2));
}

} // namespace

void MeasureSystemCalls(const BenchPlan& plan) {
    PrintHeading("System calls of the program that may enter the kernel");
    Table table({"phase", "packets", "waits", "wakes", "objects", "calls/packet", "contended locks", "us/packet"});
    const SystemCallCounter counter;
    Phases(plan, table).Run();
    FreeRun(table, "free run, audio, 1 input", SmallAudio(1, plan.smallPackets));
    FreeRun(table, "free run, audio, 8 inputs", SmallAudio(kManyInputs, plan.smallPackets / kManyInputs));
    FreeRun(table, "free run, video, 1 input", LargeVideo(1, plan.largePackets));
    table.Print();
    PrintNote("expected: 0 in the first three phases; in ping-pong one wait and one wake a packet, which also shows");
    PrintNote("that the counting works; free runs include start and stop of the worker and the threads");
    PrintNote("counted in the program's import table; a contended lock may wait in the kernel behind it");
}

} // namespace bench

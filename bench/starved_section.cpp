#include "bench/muxer_setup.h"
#include "bench/null_stream.h"
#include "bench/process_usage.h"
#include "bench/producer.h"
#include "bench/sections.h"
#include "bench/stopwatch.h"
#include "bench/system_calls.h"
#include "bench/table.h"
#include "bench/uncounted_section.h"

namespace bench {

namespace {

constexpr DWORD kStepMs = 500;

void SleepUncounted(DWORD milliseconds) {
    const UncountedSection uncounted;
    Sleep(milliseconds);
}

enum class FirstInput { Silent, Delivers };

// Both inputs are waited for. A packet each half second tells the stall breaker that the graph is alive.
void Wait(Producer& producer, FirstInput first, DWORD milliseconds) {
    for (DWORD waited = 0; waited < milliseconds; waited += kStepMs) {
        if (first == FirstInput::Delivers) {
            producer.Deliver(1);
        }
        SleepUncounted(kStepMs);
    }
}

// What one row is made of.
class Meter {
  public:
    void AddRow(Table& table, const std::string& name, UINT32 queued) const {
        constexpr double kPercent = 100.0;
        constexpr double kMsPerSecond = 1e3;
        const double cpu = ProcessCpuSeconds() - m_cpuBefore;
        const double seconds = m_watch.Seconds();
        const SystemCalls calls = SystemCallCounter::Counts() - m_callsBefore;
        table.AddRow({name, Number(seconds, 1), Number(cpu * kMsPerSecond), Number(kPercent * cpu / seconds, 2),
                      Number(static_cast<double>(calls.waits) / seconds, 1), Number(queued)});
    }

  private:
    const SystemCalls m_callsBefore = SystemCallCounter::Counts();
    const double m_cpuBefore = ProcessCpuSeconds();
    const Stopwatch m_watch;
};

void AddRun(Table& table, const std::string& name, FirstInput first, DWORD milliseconds) {
    const Load load = SmallAudio(2, 0);
    PlainNullStream stream;
    MuxerSetup setup(load, stream);
    Producer producer(load, setup.Input(0));
    setup.Pause();
    const Meter meter;
    Wait(producer, first, milliseconds);
    meter.AddRow(table, name, setup.Muxer().Interleaver().QueuedPacketCount());
    setup.Stop();
}

// Shows that the meter sees a thread that does not wait.
void AddControl(Table& table) {
    constexpr double kSpinSeconds = 0.5;
    const Meter meter;
    const Stopwatch watch;
    while (watch.Seconds() < kSpinSeconds) {
        YieldProcessor();
    }
    meter.AddRow(table, "control: no muxer, one thread spins", 0);
}

} // namespace

void MeasureStarvedWorker(const BenchPlan& plan) {
    PrintHeading("A worker that waits: two inputs, the second one silent");
    Table table({"first input", "seconds", "CPU ms", "% of a core", "waits/s", "left in the queue"});
    const SystemCallCounter counter;
    AddRun(table, "delivers two packets a second", FirstInput::Delivers, plan.starvedMs);
    AddRun(table, "silent too", FirstInput::Silent, plan.starvedMs);
    AddControl(table);
    table.Print();
    PrintNote("expected: below 1 % of a core; the worker looks at the queues 25 times a second and sleeps between");
    PrintNote("CPU of the whole process, which does nothing else meanwhile; its clock steps by 10 ms");
}

} // namespace bench

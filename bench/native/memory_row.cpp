#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "bench/native/recording.h"
#include "bench/native/rows.h"
#include "bench/null_stream.h"

namespace bench {

namespace {

constexpr size_t kPictureBytes = 1500; // so that an hour holds more than either queue does
constexpr UINT64 kHour = 3600;
constexpr size_t kShortQueue = 500; // packets
constexpr UINT64 kPacketsBetweenLooks = 64;

enum class Queues { FullOnce, Short };

void Nap() {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
}

// One recording, which either waits with its first cluster until every queue is full, or whose sources never get far
// ahead of the worker, as those of a live graph do not.
class MeasuredRecording final : public NullStream {
  public:
    MeasuredRecording(UINT64 seconds, Queues queues)
        : m_queues(queues), m_recording(seconds, kPictureBytes),
          m_job(
              Recording::Types(), [this](size_t input, UINT64 packet) { return Packet(input, packet); }, *this) {}

    void Run() {
        m_job.OnProducerDone([this](size_t) { m_peak = std::max<UINT64>(m_peak, PeakResidentBytes()); });
        m_job.Run();
    }
    // As far as the last of the sources' threads got.
    [[nodiscard]] UINT64 PeakWhileRecording() const { return m_peak; }

  private:
    [[nodiscard]] CMuxInterStream& Queue(size_t input) const {
        return *m_job.Muxer().Interleaver().StreamAt(static_cast<INT32>(input));
    }
    const LoadPacket* Packet(size_t input, UINT64 packet) {
        m_started = true;
        if (m_queues == Queues::Short && packet % kPacketsBetweenLooks == 0) {
            while (Queue(input).QueuedPackets() > kShortQueue) {
                Nap();
            }
        }
        return m_recording.Packet(input, packet);
    }
    // The head is written before the sources begin.
    void OnWrite() override {
        if (m_queues == Queues::FullOnce && m_started && !m_wereFull) {
            while (Queue(0).IsWritable() || Queue(1).IsWritable()) {
                Nap();
            }
            m_wereFull = true;
        }
    }

    const Queues m_queues;
    Recording m_recording;
    std::atomic<bool> m_started{false};
    bool m_wereFull = false; // the worker's
    std::atomic<UINT64> m_peak{0};
    MuxerJob m_job;
};

template <typename Work>
bool Succeeds(const Work& work) {
    try {
        work();
        return true;
    } catch (...) {
        return false;
    }
}

struct Run {
    const char* name;
    UINT64 seconds;
    Queues queues;
};

struct Peaks {
    double whileRecording = 0.0;
    double inAll = 0.0; // Stop, too
};

Peaks PeaksOf(const Run& run) {
    ForgetPeak();
    const UINT64 before = PeakResidentBytes();
    MeasuredRecording recording(run.seconds, run.queues);
    recording.Run();
    return {static_cast<double>(recording.PeakWhileRecording() - before),
            static_cast<double>(PeakResidentBytes() - before)};
}

// In a process of its own, so that the run finds no memory that an earlier one has left. No other thread of this
// process lives when it forks.
void MeasureRun(Report& report, const Run& run) {
    int results[2];
    if (pipe(results) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        Peaks peaks;
        const bool told = Succeeds([&] { peaks = PeaksOf(run); }) &&
                          write(results[1], &peaks, sizeof(peaks)) == static_cast<ssize_t>(sizeof(peaks));
        _exit(told ? 0 : 1);
    }
    close(results[1]);
    Peaks peaks;
    const bool told = child > 0 && read(results[0], &peaks, sizeof(peaks)) == static_cast<ssize_t>(sizeof(peaks));
    close(results[0]);
    if (child > 0) {
        waitpid(child, nullptr, 0);
    }
    if (!told) {
        throw std::runtime_error("a process of the memory row failed");
    }
    report.Add("memory", run.name, "peak bytes", peaks.inAll);
    report.Add("memory", run.name, "peak bytes before Stop", peaks.whileRecording);
}

} // namespace

// How full the queues get is chance otherwise, and far more than a day of cue points.
void MeasureMemory(const NativePlan& plan, Report& report) {
    const UINT64 longest = plan.quick ? 6 : 24;
    report.Describe("memory", "hours", longest);
    const std::string name = std::to_string(longest) + " h";
    const std::string full = name + ", queues full once";
    const std::string kept = name + ", queues short";
    const std::array<Run, 4> runs = {{{"1 h, queues full once", kHour, Queues::FullOnce},
                                      {full.c_str(), longest * kHour, Queues::FullOnce},
                                      {"1 h, queues short", kHour, Queues::Short},
                                      {kept.c_str(), longest * kHour, Queues::Short}}};
    const size_t rounds = plan.quick ? 2 : 5;
    for (size_t round = 0; round < rounds; ++round) {
        for (size_t i = 0; i < runs.size(); ++i) {
            MeasureRun(report, runs[(round + i) % runs.size()]);
        }
    }
}

} // namespace bench

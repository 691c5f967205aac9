#include <chrono>
#include <memory>
#include <thread>

#include "bench/native/recording.h"
#include "bench/native/rows.h"
#include "bench/null_stream.h"
#include "dshow/ref_time.h"

namespace bench {

namespace {

constexpr size_t kPictureBytes = 20000;

// Sleeps until each packet's time has come.
class Clock {
  public:
    void WaitFor(const LoadPacket* packet) const {
        if (packet != nullptr) {
            std::this_thread::sleep_until(m_start + std::chrono::nanoseconds(packet->start * kNsPerReferenceTime));
        }
    }

  private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

struct ClockedRecording {
    explicit ClockedRecording(UINT64 seconds) : recording(seconds, kPictureBytes) {}

    Recording recording;
    const Clock clock{};
};

PacketSource LiveSource(UINT64 seconds) {
    return [live = std::make_shared<ClockedRecording>(seconds)](size_t input, UINT64 packet) {
        const LoadPacket* const next = live->recording.Packet(input, packet);
        live->clock.WaitFor(next);
        return next;
    };
}

// The second input delivers one packet and then nothing until the end.
PacketSource StarvedSource(UINT64 seconds) {
    const UINT64 last = seconds * Recording::kSoundsPerSecond - 1;
    return [live = std::make_shared<ClockedRecording>(seconds), last](size_t input, UINT64 packet) {
        const bool silent = input == 1 && packet > 0;
        const LoadPacket* const next = live->recording.Packet(input, silent ? last : packet);
        live->clock.WaitFor(next);
        return silent && packet > 1 ? nullptr : next;
    };
}

Usage WithMuxer(const PacketSource& source) {
    PlainNullStream stream;
    MuxerJob job(Recording::Types(), source, stream);
    return Measure([&] { job.Run(); });
}

// What the sources' own sleeping costs, without a muxer.
Usage Alone(const PacketSource& source) {
    return Measure([&] {
        std::vector<std::jthread> threads;
        for (size_t input = 0; input < 2; ++input) {
            threads.emplace_back([&, input] {
                for (UINT64 i = 0; source(input, i) != nullptr; ++i) {
                }
            });
        }
    });
}

} // namespace

void MeasureLiveGraph(const NativePlan& plan, Report& report) {
    const UINT64 seconds = plan.quick ? 4 : 60;
    report.Describe("live", "seconds", seconds);
    report.Add("live", "live", WithMuxer(LiveSource(seconds)));
    report.Add("live", "live sources alone", Alone(LiveSource(seconds)));
    report.Add("live", "starved", WithMuxer(StarvedSource(seconds)));
    report.Add("live", "starved sources alone", Alone(StarvedSource(seconds)));
}

} // namespace bench

#include <chrono>
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

Usage Live(UINT64 seconds) {
    Recording recording(seconds, kPictureBytes);
    PlainNullStream stream;
    const Clock clock;
    const PacketSource source = [&](size_t input, UINT64 packet) {
        const LoadPacket* const next = recording.Packet(input, packet);
        clock.WaitFor(next);
        return next;
    };
    MuxerJob job(Recording::Types(), source, stream);
    return Measure([&] { job.Run(); });
}

// The second input delivers one packet and then nothing until the end.
Usage Starved(UINT64 seconds) {
    Recording recording(seconds, kPictureBytes);
    PlainNullStream stream;
    const Clock clock;
    const PacketSource source = [&](size_t input, UINT64 packet) {
        const bool silent = input == 1 && packet > 0;
        const LoadPacket* const next =
            recording.Packet(input, silent ? seconds * Recording::kSoundsPerSecond - 1 : packet);
        clock.WaitFor(next);
        return silent && packet > 1 ? nullptr : next;
    };
    MuxerJob job(Recording::Types(), source, stream);
    return Measure([&] { job.Run(); });
}

// What the sources' own sleeping costs, without a muxer.
Usage SourcesAlone(UINT64 seconds) {
    Recording recording(seconds, kPictureBytes);
    const Clock clock;
    return Measure([&] {
        std::vector<std::jthread> threads;
        for (size_t input = 0; input < 2; ++input) {
            threads.emplace_back([&, input] {
                for (UINT64 i = 0; const LoadPacket* const packet = recording.Packet(input, i); ++i) {
                    clock.WaitFor(packet);
                }
            });
        }
    });
}

} // namespace

void MeasureLiveGraph(const NativePlan& plan, Report& report) {
    const UINT64 seconds = plan.quick ? 4 : 60;
    report.Describe("live", "seconds", seconds);
    report.Add("live", "live", Live(seconds));
    report.Add("live", "starved", Starved(seconds));
    report.Add("live", "sources alone", SourcesAlone(seconds));
}

} // namespace bench

#include "bench/native/recording.h"
#include "bench/native/rows.h"
#include "bench/null_stream.h"

namespace bench {

namespace {

constexpr size_t kPictureBytes = 400;
constexpr double kNsPerSecond = 1e9;

struct Length {
    const char* name;
    UINT64 seconds;
    int repeats; // of short recordings in one measurement
};

void MeasureLength(Report& report, const Length& length) {
    Usage sum;
    double stop = 0.0;
    for (int i = 0; i < length.repeats; ++i) {
        Recording recording(length.seconds, kPictureBytes);
        PlainNullStream stream;
        MuxerJob job(
            Recording::Types(), [&](size_t input, UINT64 packet) { return recording.Packet(input, packet); }, stream);
        const Usage usage = Measure([&] { job.Run(); });
        sum.wall += usage.wall;
        sum.cpu += usage.cpu;
        stop = job.StopSeconds();
    }
    const auto packets = static_cast<double>(length.seconds) *
                         static_cast<double>(Recording::kPicturesPerSecond + Recording::kSoundsPerSecond) *
                         length.repeats;
    report.Add("lengths", length.name, "wall ns a packet", sum.wall / packets * kNsPerSecond);
    report.Add("lengths", length.name, "cpu ns a packet", sum.cpu / packets * kNsPerSecond);
    report.Add("lengths", length.name, "stop", stop);
}

} // namespace

void MeasureLengths(const NativePlan& plan, Report& report) {
    constexpr UINT64 kMinute = 60;
    constexpr UINT64 kHour = 3600;
    constexpr UINT64 kDay = 24 * kHour;
    std::vector<Length> lengths = {{"1 min", kMinute, 60}, {"10 min", 10 * kMinute, 6}, {"1 h", kHour, 1}};
    if (plan.quick) {
        lengths.push_back({"3 h", 3 * kHour, 1});
    } else {
        lengths.push_back({"6 h", 6 * kHour, 1});
        lengths.push_back({"24 h", kDay, 1});
    }
    const int rounds = plan.quick ? 1 : 5;
    for (int round = 0; round < rounds; ++round) {
        for (const Length& length : lengths) {
            MeasureLength(report, length);
        }
    }
}

} // namespace bench

#include <chrono>
#include <thread>

#include "bench/native/recording.h"
#include "bench/native/rows.h"
#include "bench/null_stream.h"
#include "bench/stopwatch.h"
#include "dshow/ref_time.h"
#include "mux/mux_inter_stream.h"
#include "tests/native/native_hooks.h"

namespace bench {

namespace {

constexpr size_t kPictureBytes = 16384;

// A disk that takes about a thousand pictures a second.
class SlowStream final : public NullStream {
  private:
    void OnWrite() override { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }
};

} // namespace

// Every picture is a keyframe and so a cluster: the queue drains steadily.
void MeasureFullQueue(const NativePlan& plan, Report& report) {
    const UINT64 toFill = CMuxInterStream::ByteLimitOf(MuxStreamKind::Video) / kPictureBytes;
    const UINT64 packets = toFill + (plan.quick ? 2500U : 10000U);
    const std::vector<BYTE> picture(kPictureBytes, BYTE{1});
    LoadPacket current;
    UINT64 sleepsBefore = 0;
    UINT64 wakesBefore = 0;
    double secondsBefore = 0.0;
    const Stopwatch watch;
    const PacketSource source = [&](size_t, UINT64 packet) -> const LoadPacket* {
        if (packet == toFill) {
            sleepsBefore = SleepsOfThread();
            wakesBefore = native::CountedKernelCalls().sets;
            secondsBefore = watch.Seconds();
        }
        const INT64 duration = kReferenceTimesPerSecond / static_cast<INT64>(Recording::kPicturesPerSecond);
        const INT64 start = static_cast<INT64>(packet) * duration;
        current = {picture.data(), static_cast<UINT32>(picture.size()), 0, start, start + duration, true};
        return packet < packets ? &current : nullptr;
    };
    ForgetPeak();
    const UINT64 before = PeakResidentBytes();
    SlowStream stream;
    MuxerJob job({TrackOf(LoadTrack::Kind::Avc).type}, source, stream);
    job.OnProducerDone([&](size_t) {
        const double seconds = watch.Seconds() - secondsBefore;
        report.Add("full queue", "ours", "wake-ups a second",
                   static_cast<double>(SleepsOfThread() - sleepsBefore) / seconds);
        // The worker never runs dry here, so it is the producer that is woken.
        report.Add("full queue", "ours", "woken by the worker a second",
                   static_cast<double>(native::CountedKernelCalls().sets - wakesBefore) / seconds);
        report.Add("full queue", "ours", "packets a second", static_cast<double>(packets - toFill) / seconds);
    });
    job.Run();
    report.Describe("full queue", "limit bytes", CMuxInterStream::ByteLimitOf(MuxStreamKind::Video));
    report.Add("full queue", "ours", "peak bytes", static_cast<double>(PeakResidentBytes() - before));
}

} // namespace bench

#include "bench/bare_cluster.h"
#include "bench/baselines.h"
#include "bench/stopwatch.h"
#include "dshow/ref_time.h"

namespace bench {

double BareLibrarySeconds(const Load& load) {
    libmatroska::KaxSegment segment;
    const auto tracks = MakeBareTracks(segment, load.inputs);
    libmatroska::KaxCues cues;
    BufferOutput output;
    const bool video = load.keyframeEvery > 1;

    const Stopwatch watch;
    auto cluster = std::make_unique<BareCluster>(segment, 0);
    for (UINT64 packet = 0; packet < load.packetsPerInput; ++packet) {
        const UINT64 timeNs = static_cast<UINT64>(load.StartOf(packet)) * UINT64{kNsPerReferenceTime};
        const UINT64 endNs = timeNs + static_cast<UINT64>(load.packetTicks) * UINT64{kNsPerReferenceTime};
        for (size_t input = 0; input < load.inputs; ++input) {
            const bool keyframe = video && input == 0 && packet > 0 && load.IsKeyframe(packet);
            if (keyframe || !cluster->Takes(endNs, load.payload.size())) {
                cluster->Render(output, cues);
                cluster = std::make_unique<BareCluster>(segment, endNs);
            }
            cluster->Add(*tracks[input], timeNs, load.payload.data(), load.payload.size());
        }
    }
    cluster->Render(output, cues);
    return watch.Seconds();
}

} // namespace bench

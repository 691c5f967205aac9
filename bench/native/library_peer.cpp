#include <unistd.h>

#include "bench/bare_cluster.h"
#include "bench/native/descriptor_stream.h"
#include "bench/native/peers.h"
#include "dshow/ref_time.h"

namespace bench {

namespace {

UINT64 NsOf(INT64 time) {
    return static_cast<UINT64>(time) * UINT64{kNsPerReferenceTime};
}

void Flush(BareCluster& cluster, int file) {
    static thread_local BufferOutput output;
    libmatroska::KaxCues cues;
    cluster.Render(output, cues);
    WriteAll(file, output.Rendered().data(), output.Rendered().size());
}

} // namespace

void WriteWithLibmatroska(const PacketLoad& load, const std::string& path) {
    const int file = OpenInPlace(path);
    libmatroska::KaxSegment segment;
    const auto tracks = MakeBareTracks(segment, load.Tracks().size());
    auto cluster = std::make_unique<BareCluster>(segment, 0);
    bool first = true;
    for (const LoadPacket& packet : load.Packets()) {
        const bool picture = load.Tracks()[packet.track].kind == LoadTrack::Kind::Avc;
        if ((picture && packet.keyframe && !first) || !cluster->Takes(NsOf(packet.stop), packet.size)) {
            Flush(*cluster, file);
            cluster = std::make_unique<BareCluster>(segment, NsOf(packet.start));
        }
        cluster->Add(*tracks[packet.track], NsOf(packet.start), packet.data, packet.size);
        first = false;
    }
    Flush(*cluster, file);
    close(file);
}

} // namespace bench

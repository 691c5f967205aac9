#include <memory>
#include <vector>

#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "bench/baselines.h"
#include "bench/stopwatch.h"
#include "dshow/ref_time.h"
#include "mkv/cluster_rule.h"

namespace bench {

namespace {

// Copies what is rendered into a buffer, from whose start each cluster is written again.
class BufferOutput final : public libebml::IOCallback {
  public:
    uint32 read(void*, size_t) override { return 0; }
    void setFilePointer(int64 offset, libebml::seek_mode) override { m_position = static_cast<uint64>(offset); }
    size_t write(const void* data, size_t size) override {
        const auto* const bytes = static_cast<const BYTE*>(data);
        m_buffer.insert(m_buffer.end(), bytes, bytes + size);
        m_position += size;
        return size;
    }
    uint64 getFilePointer() override { return m_position; }
    void close() override {}

    void Rewind() { m_buffer.clear(); }

  private:
    std::vector<BYTE> m_buffer;
    uint64 m_position = 0;
};

// One cluster with its blocks, which libmatroska leaves to its user to delete.
class BareCluster {
  public:
    BareCluster(libmatroska::KaxSegment& segment, UINT64 startNs) : m_startNs(startNs) {
        m_cluster.SetParent(segment);
        m_cluster.InitTimecode(startNs / mkv::kTimecodeScaleNs, mkv::kTimecodeScaleNs);
    }
    ~BareCluster() {
        const std::unique_ptr<libebml::EbmlElement> time(m_cluster.FindElt(EBML_INFO(libmatroska::KaxClusterTimecode)));
        m_cluster.RemoveAll(); // the blobs own the blocks
    }
    BareCluster(const BareCluster&) = delete;
    BareCluster& operator=(const BareCluster&) = delete;

    [[nodiscard]] bool Takes(UINT64 endNs, size_t bytes) const {
        return !mkv::ExceedsCluster(endNs, m_startNs, m_payloadBytes + bytes);
    }

    void Add(const libmatroska::KaxTrackEntry& track, UINT64 timeNs, std::vector<BYTE>& payload) {
        auto& blob =
            *m_blobs.emplace_back(std::make_unique<libmatroska::KaxBlockBlob>(libmatroska::BLOCK_BLOB_ALWAYS_SIMPLE));
        blob.SetParent(m_cluster);
        auto& frame = *new libmatroska::DataBuffer(payload.data(), static_cast<uint32>(payload.size())); // the block's
        blob.AddFrameAuto(track, timeNs, frame, libmatroska::LACING_AUTO);
        m_cluster.AddBlockBlob(&blob);
        m_payloadBytes += payload.size();
    }

    void Render(BufferOutput& output, libmatroska::KaxCues& cues) {
        output.Rewind();
        m_cluster.Render(output, cues, false);
    }

  private:
    const UINT64 m_startNs;
    UINT64 m_payloadBytes = 0;
    libmatroska::KaxCluster m_cluster;
    std::vector<std::unique_ptr<libmatroska::KaxBlockBlob>> m_blobs;
};

std::vector<libmatroska::KaxTrackEntry*> MakeTracks(libmatroska::KaxSegment& segment, size_t count) {
    auto& tracks = libebml::GetChild<libmatroska::KaxTracks>(segment);
    std::vector<libmatroska::KaxTrackEntry*> entries; // the segment's
    for (size_t i = 0; i < count; ++i) {
        auto& entry = libebml::AddNewChild<libmatroska::KaxTrackEntry>(tracks);
        libebml::GetChild<libmatroska::KaxTrackNumber>(entry).SetValue(i + 1);
        entry.SetGlobalTimecodeScale(mkv::kTimecodeScaleNs);
        entry.EnableLacing(false);
        entries.push_back(&entry);
    }
    return entries;
}

} // namespace

double BareLibrarySeconds(const Load& load) {
    libmatroska::KaxSegment segment;
    const auto tracks = MakeTracks(segment, load.inputs);
    libmatroska::KaxCues cues;
    BufferOutput output;
    auto payload = load.payload;
    const bool video = load.keyframeEvery > 1;

    const Stopwatch watch;
    auto cluster = std::make_unique<BareCluster>(segment, 0);
    for (UINT64 packet = 0; packet < load.packetsPerInput; ++packet) {
        const UINT64 timeNs = static_cast<UINT64>(load.StartOf(packet)) * UINT64{kNsPerReferenceTime};
        const UINT64 endNs = timeNs + static_cast<UINT64>(load.packetTicks) * UINT64{kNsPerReferenceTime};
        for (size_t input = 0; input < load.inputs; ++input) {
            const bool keyframe = video && input == 0 && packet > 0 && load.IsKeyframe(packet);
            if (keyframe || !cluster->Takes(endNs, payload.size())) {
                cluster->Render(output, cues);
                cluster = std::make_unique<BareCluster>(segment, endNs);
            }
            cluster->Add(*tracks[input], timeNs, payload);
        }
    }
    cluster->Render(output, cues);
    return watch.Seconds();
}

} // namespace bench

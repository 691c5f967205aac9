#include "bench/bare_cluster.h"

#include <matroska/KaxClusterData.h>

#include "mkv/cluster_rule.h"

namespace bench {

size_t BufferOutput::write(const void* data, size_t size) {
    const auto* const bytes = static_cast<const BYTE*>(data);
    m_buffer.insert(m_buffer.end(), bytes, bytes + size);
    m_position += size;
    return size;
}

BareCluster::BareCluster(libmatroska::KaxSegment& segment, UINT64 startNs) : m_startNs(startNs) {
    m_cluster.SetParent(segment);
    m_cluster.InitTimecode(startNs / mkv::kTimecodeScaleNs, mkv::kTimecodeScaleNs);
}

BareCluster::~BareCluster() {
    const std::unique_ptr<libebml::EbmlElement> time(m_cluster.FindElt(EBML_INFO(libmatroska::KaxClusterTimecode)));
    m_cluster.RemoveAll(); // the blobs own the blocks
}

bool BareCluster::Takes(UINT64 endNs, size_t bytes) const {
    return !mkv::ExceedsCluster(endNs, m_startNs, m_payloadBytes + bytes);
}

void BareCluster::Add(const libmatroska::KaxTrackEntry& track, UINT64 timeNs, const BYTE* data, size_t size) {
    auto& blob =
        *m_blobs.emplace_back(std::make_unique<libmatroska::KaxBlockBlob>(libmatroska::BLOCK_BLOB_ALWAYS_SIMPLE));
    blob.SetParent(m_cluster);
    // The block's; it never writes to the bytes.
    auto& frame = *new libmatroska::DataBuffer(const_cast<BYTE*>(data), static_cast<uint32>(size));
    blob.AddFrameAuto(track, timeNs, frame, libmatroska::LACING_AUTO);
    m_cluster.AddBlockBlob(&blob);
    m_payloadBytes += size;
}

void BareCluster::Render(BufferOutput& output, libmatroska::KaxCues& cues) {
    output.Rewind();
    m_cluster.Render(output, cues, false);
}

std::vector<libmatroska::KaxTrackEntry*> MakeBareTracks(libmatroska::KaxSegment& segment, size_t count) {
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

} // namespace bench

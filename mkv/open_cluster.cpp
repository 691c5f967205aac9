#include "mkv/open_cluster.h"

#include <matroska/KaxClusterData.h>

#include "mkv/cluster_rule.h"

namespace mkv {

namespace {

using libmatroska::DataBuffer;

// The block that takes the buffer frees it, but not the bytes: those are the frame store's.
std::unique_ptr<DataBuffer> WrapFrame(std::span<BYTE> frame) {
    return std::make_unique<DataBuffer>(frame.data(), static_cast<UINT32>(frame.size()), nullptr, false);
}

} // namespace

COpenCluster::COpenCluster(const libmatroska::KaxSegment& segment, UINT64 startNs) : m_startNs(startNs) {
    m_cluster.SetParent(segment);
    m_cluster.InitTimecode(startNs / kTimecodeScaleNs, kTimecodeScaleNs);
}

COpenCluster::~COpenCluster() {
    // The cluster would delete the blocks, which the blobs own; what it made itself is freed here.
    const std::unique_ptr<libebml::EbmlElement> timecode(m_cluster.FindElt(EBML_INFO(libmatroska::KaxClusterTimecode)));
    m_cluster.RemoveAll();
}

const libmatroska::KaxBlockBlob& COpenCluster::addSimpleBlock(const libmatroska::KaxTrackEntry& track, UINT64 timeNs,
                                                              std::span<BYTE> frame, bool keyframe) {
    auto buffer = WrapFrame(frame);
    auto& blob = addBlob(libmatroska::BLOCK_BLOB_ALWAYS_SIMPLE);
    blob.AddFrameAuto(track, timeNs, *buffer, libmatroska::LACING_AUTO);
    (void)buffer.release(); // the block's now
    static_cast<libmatroska::KaxSimpleBlock&>(blob).SetKeyframe(keyframe);
    m_cluster.AddBlockBlob(&blob);
    return blob;
}

const libmatroska::KaxBlockBlob& COpenCluster::addBlockGroup(const libmatroska::KaxTrackEntry& track,
                                                             const BlockTimes& times, std::span<BYTE> frame) {
    auto buffer = WrapFrame(frame);
    auto& blob = addBlob(libmatroska::BLOCK_BLOB_NO_SIMPLE);
    auto group = std::make_unique<libmatroska::KaxBlockGroup>();
    group->SetParent(m_cluster);
    group->AddFrame(track, times.timeNs, *buffer, libmatroska::LACING_AUTO);
    (void)buffer.release(); // the block's now
    group->SetBlockDuration(times.durationNs);
    blob.SetBlockGroup(*group.release()); // the blob's now
    m_cluster.AddBlockBlob(&blob);
    return blob;
}

void COpenCluster::render(libebml::IOCallback& io, CMkvCues& cues) {
    m_cluster.Render(io, cues, false);
}

libmatroska::KaxBlockBlob& COpenCluster::addBlob(libmatroska::BlockBlobType type) {
    auto& blob = *m_blobs.emplace_back(std::make_unique<libmatroska::KaxBlockBlob>(type));
    blob.SetParent(m_cluster);
    return blob;
}

} // namespace mkv

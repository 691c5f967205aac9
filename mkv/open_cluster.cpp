#include "mkv/open_cluster.h"

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>

#include "mkv/block_head.h"
#include "mkv/cluster_rule.h"

namespace mkv {

void COpenCluster::start(UINT64 startNs) noexcept {
    close();
    m_isOpen = true;
    m_startNs = startNs;
}

void COpenCluster::close() noexcept {
    m_blocks.reset();
    m_isOpen = false;
}

void COpenCluster::addSimpleBlock(UINT16 track, UINT64 timeNs, const FrameBytes& frame, bool keyframe) {
    CElementBytes head;
    head.addHead(EBML_ID(libmatroska::KaxSimpleBlock), BlockDataBytes(track, frame.bytes.size()));
    AddBlockHead(head, track, offsetOf(timeNs), keyframe ? kKeyframeFlag : BYTE{0});
    m_blocks.append(head.bytes(), frame, {});
}

void COpenCluster::addBlockGroup(UINT16 track, const BlockTimes& times, const FrameBytes& frame) {
    const libebml::EbmlId& blockId = EBML_ID(libmatroska::KaxBlock);
    const UINT64 dataBytes = BlockDataBytes(track, frame.bytes.size());
    CElementBytes duration;
    duration.addNumber(EBML_ID(libmatroska::KaxBlockDuration), times.durationNs / kTimecodeScaleNs);
    CElementBytes head;
    head.addHead(EBML_ID(libmatroska::KaxBlockGroup),
                 CElementBytes::elementBytes(blockId, dataBytes) + duration.bytes().size());
    head.addHead(blockId, dataBytes);
    AddBlockHead(head, track, offsetOf(times.timeNs), 0);
    m_blocks.append(head.bytes(), frame, duration.bytes());
}

void COpenCluster::write(CGatheringIO& io) {
    CElementBytes time;
    time.addNumber(EBML_ID(libmatroska::KaxClusterTimecode), m_startNs / kTimecodeScaleNs);
    CElementBytes head;
    head.addHead(EBML_ID(libmatroska::KaxCluster), time.bytes().size() + m_blocks.totalBytes());
    head.addBytes(time.bytes());
    io.writeParts(m_blocks.partsBehind(head.bytes()));
}

// From the cluster's time in whole milliseconds, truncated towards zero.
INT16 COpenCluster::offsetOf(UINT64 timeNs) const {
    const auto clusterTimeNs = static_cast<INT64>(m_startNs / kTimecodeScaleNs * kTimecodeScaleNs);
    return static_cast<INT16>((static_cast<INT64>(timeNs) - clusterTimeNs) / INT64{kTimecodeScaleNs});
}

} // namespace mkv

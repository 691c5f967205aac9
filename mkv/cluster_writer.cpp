#include "mkv/cluster_writer.h"

#include <algorithm>

#include "dshow/ref_time.h"
#include "media/payload_conversion.h"
#include "mkv/cluster_rule.h"

namespace mkv {

void CClusterWriter::setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                               INT32 cueTrack) {
    keepTracks(tracks, entries, media::NeedsAnnexBConversion);
    m_cueTrack = cueTrack;
}

bool CClusterWriter::isKeyframe(const Packet& packet) const {
    return IsKeyframe(packet, trackOf(packet));
}

REFERENCE_TIME CClusterWriter::shiftOf(UINT32 stream) const {
    return static_cast<REFERENCE_TIME>(std::min(m_shifter.offsetOf(stream), static_cast<UINT64>(kMaxReferenceTime)));
}

void CClusterWriter::startCluster(UINT64 timeNs) {
    m_cluster.start(timeNs);
}

std::optional<UINT64> CClusterWriter::addFrameToCurrentCluster(const Packet& packet) {
    const TrackFacts& track = trackOf(packet);
    const bool keyframe = IsKeyframe(packet, track);
    const BlockTimes times = m_shifter.toBlockTimes(packet.stream, packet.start, packet.stop);
    TraceFrame(packet.stream, times.timeNs, times.durationNs);
    std::vector<BYTE> room;
    const FrameBytes frame = PayloadOf(packet, track, room);
    if (frame.bytes.empty()) {
        return std::nullopt;
    }
    makeRoom(times, keyframe && isCueTrack(packet.stream), frame.bytes.size());
    addBlock(packet, times, keyframe, frame);
    return times.endNs;
}

// A new cluster takes the END time of the block that opens it, so that the block's own offset is minus its duration.
// A block whose offset would not fit opens one at its own start instead.
void CClusterWriter::makeRoom(const BlockTimes& times, bool cueKeyframe, UINT64 payloadBytes) {
    bool opens = !m_cluster.isOpen() || (cueKeyframe && times.timeNs != 0) ||
                 ExceedsCluster(times.endNs, m_cluster.startNs(), m_cluster.payloadBytes() + payloadBytes);
    UINT64 clusterNs = opens ? times.endNs : m_cluster.startNs();
    if (!FitsBlockOffset(times.timeNs, clusterNs)) {
        opens = true;
        clusterNs = times.timeNs;
    }
    if (opens) {
        flushCluster();
        startCluster(clusterNs);
    }
}

void CClusterWriter::addBlock(const Packet& packet, const BlockTimes& times, bool keyframe, const FrameBytes& frame) {
    const UINT16 number = trackOf(packet).number;
    const bool isCuePoint = packet.blockGroup || (keyframe && isCueTrack(packet.stream));
    if (isCuePoint) {
        cues().makeRoom(); // so that the block comes in with its point, or not at all
    }
    if (packet.blockGroup) {
        m_cluster.addBlockGroup(number, times, frame);
    } else {
        m_cluster.addSimpleBlock(number, times.timeNs, frame, keyframe);
    }
    if (isCuePoint) {
        cues().announce(times.timeNs, number);
    }
    setOpenEnd(std::max(openEndNs(), times.endNs));
}

bool CClusterWriter::isCueTrack(UINT32 stream) const {
    return m_cueTrack != kNoCueTrack && stream == static_cast<UINT32>(m_cueTrack);
}

} // namespace mkv

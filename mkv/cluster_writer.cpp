#include "mkv/cluster_writer.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "mkv/cluster_rule.h"
#include "mkv/codec_mapping.h"
#include "mkv/debug_trace.h"
#include "mkv/writer_errors.h"

namespace mkv {

namespace {

constexpr size_t kTraceBufferChars = 200;
// The library's readers refuse binary elements of 2 GiB - 1 byte, and a block has up to five bytes before its frame.
constexpr UINT32 kMaxFrameBytes = 0x7ffffffe - 5;

void TraceFrame(UINT32 stream, const BlockTimes& times) {
    if (!IsDebugTraceOn()) {
        return;
    }
    char text[kTraceBufferChars];
    std::snprintf(text, sizeof(text), "addFrameToCurrentCluster: %d time: %" PRIu64 " duration: %" PRIu64,
                  static_cast<int>(stream), static_cast<uint64_t>(times.timeNs),
                  static_cast<uint64_t>(times.durationNs));
    DebugTrace(text);
}

FrameBytes FrameOf(const Packet& packet) {
    return {{packet.data, packet.size}, packet.owned};
}

// In place where the packet's bytes are ours, else in that room.
FrameBytes ConvertedFrame(const Packet& packet, const AM_MEDIA_TYPE& type, std::vector<BYTE>& room) {
    if (packet.owned != nullptr) {
        BYTE* const bytes = packet.owned->get() + (packet.data - packet.owned->get());
        if (const auto frame = media::ConvertAnnexBInPlace({bytes, packet.size})) {
            return {*frame, packet.owned};
        }
    }
    room = media::ConvertPayload(type, {packet.data, packet.size});
    return {room, nullptr};
}

// Only video has blocks that depend on others.
bool IsKeyframe(const Packet& packet, const AM_MEDIA_TYPE& type) {
    return TrackTypeOf(type) != media::kTrackTypeVideo || packet.syncPoint;
}

} // namespace

CClusterWriter::CClusterWriter(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues)
    : m_io(io), m_segment(segment), m_cues(cues) {}

void CClusterWriter::setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                               INT32 cueTrack) {
    m_tracks.clear();
    for (size_t i = 0; i < std::min(tracks.size(), entries.size()); ++i) {
        const AM_MEDIA_TYPE& type = tracks[i].type;
        m_tracks.push_back({type, static_cast<UINT16>(entries[i]->TrackNumber()), media::NeedsAnnexBConversion(type)});
    }
    m_cueTrack = cueTrack;
}

void CClusterWriter::startCluster(UINT64 timeNs) {
    m_cluster.start(timeNs);
}

void CClusterWriter::flushCluster() {
    if (!m_cluster.isOpen()) {
        return;
    }
    try {
        const CGatheringIO::Place place = m_io.place();
        m_cluster.write(m_io);
        m_cluster.close();
        if (m_io.takeLost()) {
            dropFacts();
            m_io.returnTo(place); // the next one takes its place
            return;
        }
        m_cues.keepAnnounced(m_segment.GetRelativePosition(place.position));
        m_writtenEndNs = m_openEndNs;
    } catch (...) {
        m_cluster.close(); // written once, whatever happens
        m_io.discard();
        dropFacts();
        throw;
    }
}

// What the file would tell of a cluster that is not there.
void CClusterWriter::dropFacts() noexcept {
    m_cues.dropAnnounced();
    m_openEndNs = m_writtenEndNs;
}

std::optional<UINT64> CClusterWriter::addFrameToCurrentCluster(const Packet& packet) {
    if (packet.stream >= m_tracks.size()) {
        throw kTrackOutOfRangeError;
    }
    const TrackFacts& track = m_tracks[packet.stream];
    const bool keyframe = IsKeyframe(packet, track.type);
    const BlockTimes times = m_shifter.toBlockTimes(packet.stream, packet.start, packet.stop);
    TraceFrame(packet.stream, times);
    if (packet.data == nullptr || packet.size > kMaxFrameBytes) {
        return std::nullopt;
    }
    std::vector<BYTE> room;
    const FrameBytes frame = track.hasStartCodes ? ConvertedFrame(packet, track.type, room) : FrameOf(packet);
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
    const UINT16 number = m_tracks[packet.stream].number;
    const bool isCuePoint = packet.blockGroup || (keyframe && isCueTrack(packet.stream));
    if (isCuePoint) {
        m_cues.makeRoom(); // so that the block comes in with its point, or not at all
    }
    if (packet.blockGroup) {
        m_cluster.addBlockGroup(number, times, frame);
    } else {
        m_cluster.addSimpleBlock(number, times.timeNs, frame, keyframe);
    }
    if (isCuePoint) {
        m_cues.announce(times.timeNs, number);
    }
    m_openEndNs = std::max(m_openEndNs, times.endNs);
}

bool CClusterWriter::isCueTrack(UINT32 stream) const {
    return m_cueTrack != kNoCueTrack && stream == static_cast<UINT32>(m_cueTrack);
}

} // namespace mkv

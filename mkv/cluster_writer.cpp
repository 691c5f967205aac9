#include "mkv/cluster_writer.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

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

std::vector<BYTE> PayloadOf(const Packet& packet, const AM_MEDIA_TYPE& type) {
    if (packet.data == nullptr || packet.size > kMaxFrameBytes) {
        return {};
    }
    return media::ConvertPayload(type, {packet.data, packet.size});
}

// Only video has blocks that depend on others.
bool IsKeyframe(const Packet& packet, const AM_MEDIA_TYPE& type) {
    return TrackTypeOf(type) != media::kTrackTypeVideo || packet.syncPoint;
}

} // namespace

CClusterWriter::CClusterWriter(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues)
    : m_io(io), m_segment(segment), m_cues(cues) {}

CClusterWriter::~CClusterWriter() {
    m_cues.forgetPending();
}

void CClusterWriter::setTracks(const TrackList& tracks, std::vector<libmatroska::KaxTrackEntry*> entries,
                               INT32 cueTrack) {
    m_tracks = &tracks;
    m_entries = std::move(entries);
    m_cueTrack = cueTrack;
}

void CClusterWriter::startCluster(UINT64 timeNs) {
    m_cluster = std::make_unique<COpenCluster>(m_segment, timeNs);
}

void CClusterWriter::flushCluster() {
    const auto cluster = std::exchange(m_cluster, nullptr); // rendered once, whatever happens
    if (!cluster) {
        return;
    }
    try {
        const CGatheringIO::Place place = m_io.place();
        cluster->render(m_io, m_cues);
        m_io.flush();
        if (m_io.takeLost()) {
            m_cues.dropRendered();
            m_io.returnTo(place); // the next one takes its place
            return;
        }
        m_cues.keepRendered();
    } catch (...) {
        m_io.discard();
        m_cues.dropRendered();
        throw;
    }
}

std::optional<UINT64> CClusterWriter::addFrameToCurrentCluster(const Packet& packet) {
    if (m_tracks == nullptr || packet.stream >= m_tracks->size()) {
        throw kTrackOutOfRangeError;
    }
    const AM_MEDIA_TYPE& type = (*m_tracks)[packet.stream].type;
    const bool keyframe = IsKeyframe(packet, type);
    const BlockTimes times = m_shifter.toBlockTimes(packet.stream, packet.start, packet.stop);
    TraceFrame(packet.stream, times);

    auto payload = PayloadOf(packet, type);
    if (payload.empty()) {
        return std::nullopt;
    }
    makeRoom(times, keyframe && isCueTrack(packet.stream), payload.size());
    addBlock(packet, times, keyframe, std::move(payload));
    return times.endNs;
}

// A new cluster takes the END time of the block that opens it, so that the block's own offset is minus its duration.
// A block whose offset would not fit opens one at its own start instead.
void CClusterWriter::makeRoom(const BlockTimes& times, bool cueKeyframe, UINT64 payloadBytes) {
    bool opens = !m_cluster || (cueKeyframe && times.timeNs != 0) ||
                 ExceedsCluster(times.endNs, m_cluster->startNs(), m_cluster->payloadBytes() + payloadBytes);
    UINT64 clusterNs = opens ? times.endNs : m_cluster->startNs();
    if (!FitsBlockOffset(times.timeNs, clusterNs)) {
        opens = true;
        clusterNs = times.timeNs;
    }
    if (opens) {
        flushCluster();
        startCluster(clusterNs);
    }
}

void CClusterWriter::addBlock(const Packet& packet, const BlockTimes& times, bool keyframe, std::vector<BYTE> payload) {
    const auto size = payload.size();
    const std::span<BYTE> frame(m_cluster->frames().append(std::move(payload)), size);
    const auto& entry = *m_entries[packet.stream];
    const auto& blob = packet.blockGroup ? m_cluster->addBlockGroup(entry, times, frame)
                                         : m_cluster->addSimpleBlock(entry, times.timeNs, frame, keyframe);
    if (packet.blockGroup || (keyframe && isCueTrack(packet.stream))) {
        m_cues.AddBlockBlob(blob);
    }
}

bool CClusterWriter::isCueTrack(UINT32 stream) const {
    return m_cueTrack != kNoCueTrack && stream == static_cast<UINT32>(m_cueTrack);
}

} // namespace mkv

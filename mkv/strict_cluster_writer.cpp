#include "mkv/strict_cluster_writer.h"

#include <algorithm>

#include "media/opus_padding.h"
#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "mkv/cluster_rule.h"
#include "mkv/codec_mapping.h"

namespace mkv {

namespace {

constexpr INT64 kSoundCueDistanceMs = 2000;

std::optional<UINT32> FirstOf(INT32 trackType, const TrackList& tracks) {
    const auto found = std::find_if(tracks.begin(), tracks.end(),
                                    [trackType](const Track& track) { return TrackTypeOf(track.type) == trackType; });
    return found == tracks.end() ? std::nullopt : std::optional(static_cast<UINT32>(found - tracks.begin()));
}

// What stands beside the block of a packet that is to be converted yet; empty: nothing.
std::vector<BYTE> AdditionOf(const Packet& packet, const TrackFacts& track) {
    if (!track.isConverted || packet.data == nullptr) {
        return {};
    }
    return media::StrictAdditionOf(track.type, {packet.data, packet.size});
}

} // namespace

void CStrictClusterWriter::setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                                     INT32 /*cueTrack*/) {
    keepTracks(tracks, entries, media::NeedsStrictConversion);
    m_cueVideo = FirstOf(media::kTrackTypeVideo, tracks);
    m_cueSound = m_cueVideo ? std::nullopt : FirstOf(media::kTrackTypeAudio, tracks);
}

std::optional<UINT64> CStrictClusterWriter::addFrameToCurrentCluster(const Packet& packet) {
    std::vector<BYTE> room;
    const std::vector<BYTE> addition = AdditionOf(packet, trackOf(packet)); // the frame may take its place
    const FrameBytes frame = StrictPayloadOf(packet, trackOf(packet), room);
    if (frame.bytes.empty()) {
        return std::nullopt;
    }
    CStrictCluster::Block block = blockOf(packet, frame);
    block.hasAddition = !addition.empty();
    const bool isCueVideo = packet.stream == m_cueVideo;
    if (belongsIntoNext(block, isCueVideo && block.isKeyframe, frame.bytes.size() + addition.size())) {
        flushCluster();
    }
    cues().makeRoom(m_cuePoints + 1); // so that the block comes in with its point, or not at all
    m_cluster.add(block, frame, addition);
    m_hasCueVideo = m_hasCueVideo || isCueVideo;
    m_cuePoints += block.isCuePoint ? 1 : 0;
    if (block.isCuePoint && packet.stream == m_cueSound) {
        m_lastSoundCueMs = block.times.startMs;
    }
    setOpenEnd(std::max(writtenEndNs(), fileNs(m_cluster.latestEndMs())));
    tellIfFirstKeyframe(packet.stream, block.isKeyframe, frame.bytes);
    return openEndNs();
}

// The units of a frame tell it before they are made into those of a block, too.
bool CStrictClusterWriter::isKeyframe(const Packet& packet) const {
    return IsStrictKeyframe(packet, trackOf(packet), {{packet.data, packet.size}, nullptr});
}

CStrictCluster::Block CStrictClusterWriter::blockOf(const Packet& packet, const FrameBytes& frame) {
    const TrackFacts& track = trackOf(packet);
    CStrictCluster::Block block;
    block.track = track.number;
    block.times = m_times.take(packet.start, packet.stop);
    block.isKeyframe = IsStrictKeyframe(packet, track, frame);
    block.isText = packet.blockGroup;
    if (media::IsOpus(track.type) && packet.stop > packet.start) {
        block.discardPaddingNs = media::OpusPaddingNs(frame.bytes, packet.stop - packet.start);
    }
    block.isCuePoint = isCuePoint(packet, block);
    TraceFrame(packet.stream, fileNs(block.times.startMs),
               static_cast<UINT64>(block.times.endMs - block.times.startMs) * kTimecodeScaleNs);
    return block;
}

bool CStrictClusterWriter::isCuePoint(const Packet& packet, const CStrictCluster::Block& block) const {
    if (packet.stream == m_cueSound) {
        return !m_lastSoundCueMs || block.times.startMs - *m_lastSoundCueMs >= kSoundCueDistanceMs;
    }
    return block.isText || (packet.stream == m_cueVideo && block.isKeyframe);
}

// What comes in front of the very first picture stays with it: the first cluster is the one that can still be shifted,
// and the pictures behind may turn out to start earlier.
bool CStrictClusterWriter::belongsIntoNext(const CStrictCluster::Block& block, bool isCueKeyframe,
                                           UINT64 payloadBytes) const {
    if (m_cluster.isEmpty()) {
        return false;
    }
    const bool beginsThere = isCueKeyframe && (m_hasCueVideo || m_times.isFixed());
    return beginsThere || m_cluster.isTooSmallFor(block.times.startMs, payloadBytes);
}

void CStrictClusterWriter::writeCluster(CGatheringIO& io) {
    setOpenEnd(std::max(writtenEndNs(), fileNs(m_cluster.latestEndMs()))); // the shift may have grown
    announceCues(m_cluster.timeBytes(m_times.shiftMs()));
    m_cluster.write(io, m_times.shiftMs());
}

// There is room for all of them.
void CStrictClusterWriter::announceCues(UINT64 timeBytes) {
    for (const CStrictCluster::PlacedBlock& block : m_cluster.blocks()) {
        if (!block.isCuePoint) {
            continue;
        }
        CuePointFacts point{fileNs(block.times.startMs), block.track, timeBytes + block.position, 0};
        if (block.isText) {
            point.durationNs = static_cast<UINT64>(block.times.endMs - block.times.startMs) * kTimecodeScaleNs;
        }
        cues().announce(point);
    }
}

void CStrictClusterWriter::keepFacts() noexcept {
    m_times.fixShift();
    if (observer() == nullptr) {
        return;
    }
    for (const CStrictCluster::PlacedBlock& block : m_cluster.blocks()) {
        observer()->blockWritten(
            {block.track, block.payloadBytes, fileNs(block.times.startMs), fileNs(block.times.endMs)});
    }
}

void CStrictClusterWriter::closeCluster() noexcept {
    m_cluster.clear();
    m_hasCueVideo = false;
    m_cuePoints = 0;
}

UINT64 CStrictClusterWriter::fileNs(INT64 packetMs) const {
    return m_times.fileMs(packetMs) * kTimecodeScaleNs;
}

} // namespace mkv

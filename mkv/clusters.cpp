#include "mkv/clusters.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "mkv/cluster_writer.h"
#include "mkv/debug_trace.h"
#include "mkv/strict_cluster_writer.h"
#include "mkv/writer_errors.h"

namespace mkv {

namespace {

constexpr size_t kTraceBufferChars = 200;

} // namespace

std::unique_ptr<CClusters> MakeClusters(bool isStrict, CGatheringIO& io, const libmatroska::KaxSegment& segment,
                                        CMkvCues& cues) {
    if (isStrict) {
        return std::make_unique<CStrictClusterWriter>(io, segment, cues);
    }
    return std::make_unique<CClusterWriter>(io, segment, cues);
}

void TraceFrame(UINT32 stream, UINT64 timeNs, UINT64 durationNs) {
    if (!IsDebugTraceOn()) {
        return;
    }
    char text[kTraceBufferChars];
    std::snprintf(text, sizeof(text), "addFrameToCurrentCluster: %d time: %" PRIu64 " duration: %" PRIu64,
                  static_cast<int>(stream), static_cast<uint64_t>(timeNs), static_cast<uint64_t>(durationNs));
    DebugTrace(text);
}

void CClusters::keepTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                           NeedsConversion needsConversion) {
    m_tracks.clear();
    m_hadKeyframe.assign(tracks.size(), false);
    for (size_t i = 0; i < std::min(tracks.size(), entries.size()); ++i) {
        const AM_MEDIA_TYPE& type = tracks[i].type;
        m_tracks.push_back({type, static_cast<UINT16>(entries[i]->TrackNumber()), needsConversion(type)});
    }
}

void CClusters::tellIfFirstKeyframe(UINT32 stream, bool isKeyframe, std::span<const BYTE> frame) {
    if (!isKeyframe || m_hadKeyframe[stream]) {
        return;
    }
    m_hadKeyframe[stream] = true;
    if (m_firstKeyframe) {
        m_firstKeyframe(stream, frame);
    }
}

const TrackFacts& CClusters::trackOf(const Packet& packet) const {
    if (packet.stream >= m_tracks.size()) {
        throw kTrackOutOfRangeError;
    }
    return m_tracks[packet.stream];
}

void CClusters::flushCluster() {
    if (!hasCluster()) {
        return;
    }
    try {
        const CGatheringIO::Place place = m_io.place();
        writeCluster(m_io);
        if (m_io.takeLost()) {
            closeCluster();
            dropFacts();
            m_io.returnTo(place); // the next one takes its place
            return;
        }
        m_cues.keepAnnounced(m_segment.GetRelativePosition(place.position));
        m_writtenEndNs = m_openEndNs;
        ++m_writtenCount;
        keepFacts();
        closeCluster();
    } catch (...) {
        closeCluster(); // written once, whatever happens
        m_io.discard();
        dropFacts();
        throw;
    }
}

// What the file would tell of a cluster that is not there.
void CClusters::dropFacts() noexcept {
    m_cues.dropAnnounced();
    m_openEndNs = m_writtenEndNs;
}

} // namespace mkv

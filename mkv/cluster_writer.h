// CClusterWriter: from packets to blocks in clusters: shifts the times, decides when a cluster ends, tells the cues.
// Units: packets in 100 ns, all else in nanoseconds and bytes. Owner: the file being written; segment, cues and tracks
// outlive it. Threads: the writer's. Errors: kTrackOutOfRangeError, kUnsupportedTypeError, what the
// output throws, std::bad_alloc; the cluster that could not be written is dropped then, and the next packet opens
// another.
#pragma once

#include <optional>
#include <vector>

#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/gathering_io.h"
#include "mkv/mkv_cues.h"
#include "mkv/open_cluster.h"
#include "mkv/time_shifter.h"
#include "mkv/writer_input.h"

namespace mkv {

inline constexpr INT32 kNoCueTrack = -1;

class CClusterWriter {
  public:
    CClusterWriter(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues);
    ~CClusterWriter() = default;
    CClusterWriter(const CClusterWriter&) = delete;
    CClusterWriter& operator=(const CClusterWriter&) = delete;

    // The entries of the tracks, in their order; the track whose keyframes begin clusters and are cue points.
    void setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries, INT32 cueTrack);
    [[nodiscard]] size_t trackEntryCount() const { return m_tracks.size(); }
    // The largest end time of the blocks whose clusters were written.
    [[nodiscard]] UINT64 writtenEndNs() const { return m_writtenEndNs; }

    // Instead of starting the first one: clusters that end there were written before.
    void resumeBehind(UINT64 endNs) noexcept { m_openEndNs = m_writtenEndNs = endNs; }
    void startCluster(UINT64 timeNs);
    // Writes the current cluster, even one without blocks; nothing when there is none. One that a failed write lost
    // leaves neither size nor cue points.
    void flushCluster();
    // The end time of the block written; none when the packet left no payload.
    std::optional<UINT64> addFrameToCurrentCluster(const Packet& packet);

  private:
    // What each packet needs of its track.
    struct TrackFacts {
        const AM_MEDIA_TYPE& type;
        UINT16 number;
        bool hasStartCodes;
    };

    void makeRoom(const BlockTimes& times, bool cueKeyframe, UINT64 payloadBytes);
    void addBlock(const Packet& packet, const BlockTimes& times, bool keyframe, const FrameBytes& frame);
    void dropFacts() noexcept;
    [[nodiscard]] bool isCueTrack(UINT32 stream) const;

    CGatheringIO& m_io;
    const libmatroska::KaxSegment& m_segment;
    CMkvCues& m_cues;
    std::vector<TrackFacts> m_tracks;
    INT32 m_cueTrack = kNoCueTrack;

    COpenCluster m_cluster;
    UINT64 m_openEndNs = 0; // the largest end time of its blocks and of those written
    UINT64 m_writtenEndNs = 0;
    CTimeShifter m_shifter;
};

} // namespace mkv

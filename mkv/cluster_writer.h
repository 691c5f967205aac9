// CClusterWriter: from packets to blocks in clusters: shifts the times, decides when a cluster ends, tells the cues.
// Units: packets in 100 ns, all else in nanoseconds and bytes. Owner: the file being written; segment, cues, tracks
// and entries outlive it. Threads: the writer's. Errors: kTrackOutOfRangeError, kUnsupportedTypeError, what the
// output throws, std::bad_alloc; the cluster that could not be written is dropped then, and the next packet opens
// another.
#pragma once

#include <memory>
#include <optional>
#include <vector>

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
    ~CClusterWriter();
    CClusterWriter(const CClusterWriter&) = delete;
    CClusterWriter& operator=(const CClusterWriter&) = delete;

    // The entries of the tracks, in their order; the track whose keyframes begin clusters and are cue points.
    void setTracks(const TrackList& tracks, std::vector<libmatroska::KaxTrackEntry*> entries, INT32 cueTrack);
    [[nodiscard]] size_t trackEntryCount() const { return m_entries.size(); }

    void startCluster(UINT64 timeNs);
    // Writes the current cluster, even one without blocks; nothing when there is none. One that a failed write lost
    // leaves neither size nor cue points.
    void flushCluster();
    // The end time of the block written; none when the packet left no payload.
    std::optional<UINT64> addFrameToCurrentCluster(const Packet& packet);

  private:
    void makeRoom(const BlockTimes& times, bool cueKeyframe, UINT64 payloadBytes);
    void addBlock(const Packet& packet, const BlockTimes& times, bool keyframe, std::vector<BYTE> payload);
    [[nodiscard]] bool isCueTrack(UINT32 stream) const;

    CGatheringIO& m_io;
    const libmatroska::KaxSegment& m_segment;
    CMkvCues& m_cues;
    const TrackList* m_tracks = nullptr;
    std::vector<libmatroska::KaxTrackEntry*> m_entries; // owned by the segment
    INT32 m_cueTrack = kNoCueTrack;

    std::unique_ptr<COpenCluster> m_cluster;
    CTimeShifter m_shifter;
};

} // namespace mkv

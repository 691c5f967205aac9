// CStrictClusterWriter: clusters of the strict profile. Times are rounded, and shifted for all tracks alike; a cluster
// has the time of its earliest block, begins at a keyframe of the first video track where it can, and holds at most
// five seconds and 5 MiB. Cue points: keyframes of the first video track, each text, and without video a sound block
// every two seconds.
#pragma once

#include "dshow/ref_time.h"
#include "mkv/clusters.h"
#include "mkv/strict_cluster.h"
#include "mkv/strict_times.h"

namespace mkv {

class CStrictClusterWriter final : public CClusters {
  public:
    CStrictClusterWriter(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues)
        : CClusters(io, segment, cues) {}

    // CClusters; the cue track is chosen here, and a cluster begins with its first block.
    void setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                   INT32 cueTrack) override;
    void startCluster(UINT64 /*timeNs*/) override {}
    void writeLive() noexcept override { m_cluster.useLiveSpan(); }
    std::optional<UINT64> addFrameToCurrentCluster(const Packet& packet) override;
    [[nodiscard]] bool isKeyframe(const Packet& packet) const override;
    [[nodiscard]] REFERENCE_TIME shiftOf(UINT32 /*stream*/) const override {
        return m_times.shiftMs() * kReferenceTimesPerMs;
    }
    [[nodiscard]] UINT64 openBytes() const override { return m_cluster.totalBytes(); }

  private:
    // CClusters
    [[nodiscard]] bool hasCluster() const override { return !m_cluster.isEmpty(); }
    void writeCluster(CGatheringIO& io) override;
    void closeCluster() noexcept override;
    void keepFacts() noexcept override;

    [[nodiscard]] CStrictCluster::Block blockOf(const Packet& packet, const FrameBytes& frame);
    [[nodiscard]] bool isCuePoint(const Packet& packet, const CStrictCluster::Block& block) const;
    [[nodiscard]] bool belongsIntoNext(const CStrictCluster::Block& block, bool isCueKeyframe,
                                       UINT64 payloadBytes) const;
    void announceCues(UINT64 timeBytes);
    [[nodiscard]] UINT64 fileNs(INT64 packetMs) const;

    CStrictCluster m_cluster;
    CStrictTimes m_times;
    std::optional<UINT32> m_cueVideo; // of the tracks, from 0
    std::optional<UINT32> m_cueSound; // where there is no video
    std::optional<INT64> m_lastSoundCueMs;
    bool m_hasCueVideo = false; // the cluster does
    size_t m_cuePoints = 0;     // of it
};

} // namespace mkv

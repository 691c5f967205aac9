// CClusterWriter: clusters of the compatible profile, with the oddities that readers of old files know: each track is
// shifted by itself, and a cluster has the end time of the block that opens it.
#pragma once

#include "mkv/clusters.h"
#include "mkv/open_cluster.h"
#include "mkv/time_shifter.h"

namespace mkv {

class CClusterWriter final : public CClusters {
  public:
    CClusterWriter(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues)
        : CClusters(io, segment, cues) {}

    // CClusters
    void setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                   INT32 cueTrack) override;
    void startCluster(UINT64 timeNs) override;
    std::optional<UINT64> addFrameToCurrentCluster(const Packet& packet) override;
    [[nodiscard]] bool isKeyframe(const Packet& packet) const override;
    [[nodiscard]] REFERENCE_TIME shiftOf(UINT32 stream) const override;
    [[nodiscard]] UINT64 openBytes() const override { return m_cluster.totalBytes(); }

  private:
    // CClusters
    [[nodiscard]] bool hasCluster() const override { return m_cluster.isOpen(); }
    void writeCluster(CGatheringIO& io) override { m_cluster.write(io); }
    void closeCluster() noexcept override { m_cluster.close(); }

    void makeRoom(const BlockTimes& times, bool cueKeyframe, UINT64 payloadBytes);
    void addBlock(const Packet& packet, const BlockTimes& times, bool keyframe, const FrameBytes& frame);
    [[nodiscard]] bool isCueTrack(UINT32 stream) const;

    INT32 m_cueTrack = kNoCueTrack;
    COpenCluster m_cluster;
    CTimeShifter m_shifter;
};

} // namespace mkv

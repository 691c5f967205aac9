// COpenCluster: one cluster from its start until it is written: the libmatroska element, its blocks and their bytes.
// Units: nanoseconds, bytes. Owner: the cluster writer. Threads: the writer's.
// Errors: std::bad_alloc. It is rendered once at most, and destroyed afterwards whether that succeeded or not.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>

#include "mkv/frame_store.h"
#include "mkv/mkv_cues.h"
#include "mkv/time_shifter.h"

namespace mkv {

class COpenCluster {
  public:
    COpenCluster(const libmatroska::KaxSegment& segment, UINT64 startNs);
    ~COpenCluster();
    COpenCluster(const COpenCluster&) = delete;
    COpenCluster& operator=(const COpenCluster&) = delete;

    [[nodiscard]] UINT64 startNs() const { return m_startNs; }
    [[nodiscard]] UINT64 payloadBytes() const { return m_frames.totalBytes(); }
    [[nodiscard]] CFrameStore& frames() { return m_frames; }

    // The frame lies in frames(). The result is what the cues are told of.
    const libmatroska::KaxBlockBlob& addSimpleBlock(const libmatroska::KaxTrackEntry& track, UINT64 timeNs,
                                                    std::span<BYTE> frame, bool keyframe);
    const libmatroska::KaxBlockBlob& addBlockGroup(const libmatroska::KaxTrackEntry& track, const BlockTimes& times,
                                                   std::span<BYTE> frame);
    void render(libebml::IOCallback& io, CMkvCues& cues);

  private:
    libmatroska::KaxBlockBlob& addBlob(libmatroska::BlockBlobType type);

    const UINT64 m_startNs;
    libmatroska::KaxCluster m_cluster;
    std::vector<std::unique_ptr<libmatroska::KaxBlockBlob>> m_blobs;
    CFrameStore m_frames;
};

} // namespace mkv

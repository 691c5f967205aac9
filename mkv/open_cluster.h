// COpenCluster: the cluster that blocks are added to, rendered as libmatroska renders it, block by block as they come.
// Units: nanoseconds, bytes. Owner: the cluster writer. Threads: the writer's. One is open at a time; its memory is
// used again for the next one.
// Errors: std::bad_alloc, nothing is added then; what the output throws.
#pragma once

#include "mkv/cluster_bytes.h"
#include "mkv/gathering_io.h"
#include "mkv/time_shifter.h"

namespace mkv {

class COpenCluster {
  public:
    // One that is open already is forgotten.
    void start(UINT64 startNs) noexcept;
    // Forgets it; what it took over goes back.
    void close() noexcept;

    [[nodiscard]] bool isOpen() const { return m_isOpen; }
    [[nodiscard]] UINT64 startNs() const { return m_startNs; }
    [[nodiscard]] UINT64 payloadBytes() const { return m_blocks.payloadBytes(); }
    [[nodiscard]] UINT64 totalBytes() const { return m_blocks.totalBytes(); }

    // The block's time is one that fits its 16-bit offset (FitsBlockOffset). The track is its number, from 1.
    void addSimpleBlock(UINT16 track, UINT64 timeNs, const FrameBytes& frame, bool keyframe);
    void addBlockGroup(UINT16 track, const BlockTimes& times, const FrameBytes& frame);
    // The cluster as it is, in one write when no payload was taken over.
    void write(CGatheringIO& io);

  private:
    [[nodiscard]] INT16 offsetOf(UINT64 timeNs) const;

    bool m_isOpen = false;
    UINT64 m_startNs = 0;
    CClusterBytes m_blocks;
};

} // namespace mkv

// CStrictCluster: the open cluster of the strict profile. Its time is the start of its earliest block, which is known
// only when it is written: until then blocks have the times of their packets, and rooms for their offsets.
// Units: ms of the packets, bytes. Owner: the strict cluster writer. Threads: the writer's. Its memory is used again
// for the next cluster. Errors: std::bad_alloc, nothing is added then; what the output throws.
#pragma once

#include <span>
#include <vector>

#include "mkv/cluster_bytes.h"
#include "mkv/cluster_rule.h"
#include "mkv/gathering_io.h"
#include "mkv/strict_times.h"

namespace mkv {

class CStrictCluster {
  public:
    struct Block {
        UINT16 track = 0; // its number, from 1
        PacketTimes times;
        bool isKeyframe = true;
        bool isCuePoint = false;
        bool isText = false;         // a block group; its cue point has its duration
        bool hasAddition = false;    // makes it a block group, too
        UINT64 discardPaddingNs = 0; // makes it a block group, too
    };
    // A block with what is known once it stands in the cluster.
    struct PlacedBlock : Block {
        UINT64 payloadBytes = 0; // with the addition
        UINT64 position = 0;     // of its element, behind the cluster's time
        size_t offsetPlace = 0;
    };

    // Of all clusters to come.
    void useLiveSpan() noexcept { m_maxSpanMs = kMaxLiveSpanMs; }

    [[nodiscard]] bool isEmpty() const { return m_blocks.empty(); }
    [[nodiscard]] UINT64 totalBytes() const { return m_bytes.totalBytes(); }
    [[nodiscard]] INT64 earliestMs() const { return m_earliestMs; }
    [[nodiscard]] INT64 latestEndMs() const { return m_latestEndMs; }
    [[nodiscard]] const std::vector<PlacedBlock>& blocks() const { return m_blocks; }
    // Whether one that starts there, with so much payload, belongs into another cluster.
    [[nodiscard]] bool isTooSmallFor(INT64 startMs, UINT64 payloadBytes) const;

    // The addition stands beside the frame, where the block has one.
    void add(const Block& block, const FrameBytes& frame, std::span<const BYTE> addition = {});
    // Answers where its blocks' positions count from, in its data.
    [[nodiscard]] UINT64 timeBytes(INT64 shiftMs) const;
    // As it is, with that shift.
    void write(CGatheringIO& io, INT64 shiftMs);
    // Forgets all; what it took over goes back.
    void clear() noexcept;

  private:
    INT64 m_maxSpanMs = kMaxStrictSpanMs;
    INT64 m_earliestMs = 0;
    INT64 m_latestMs = 0; // start
    INT64 m_latestEndMs = 0;
    CClusterBytes m_bytes;
    std::vector<PlacedBlock> m_blocks;
};

} // namespace mkv

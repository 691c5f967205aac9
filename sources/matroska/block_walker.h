// BlockWalker: the blocks of a Matroska file one after the other, with what their group says; the frames inside are
// not touched.
//
// Units: ticks of the file's timestamp scale. Owner: holds views of the source and the segment. Threads: one at a time.
// Errors: behind damage it goes on at the next cluster and remembers that something was lost.
#pragma once

#include <optional>

#include "sources/matroska/ebml_reader.h"

namespace matroska {

struct Block {
    UINT64 track = 0;
    INT64 ticks = 0; // from the start of the segment; may be below zero
    std::optional<UINT64> durationTicks;
    BYTE lacing = 0; // as in the flags
    bool keyframe = false;
    UINT64 paddingNs = 0; // what its end has beyond the stream
    UINT64 start = 0;     // position of its element, or of its group's
    UINT64 data = 0;      // position of the frames
    UINT64 size = 0;
    // Of the addition of identifier 1 beside the frames; 0: there is none.
    UINT64 additionData = 0;
    UINT64 additionSize = 0;
};

class BlockWalker {
  public:
    BlockWalker(const EbmlReader& reader, const Element& segment)
        : m_reader(reader), m_segment(segment), m_position(segment.data) {}

    void Rewind();
    // None at the end.
    [[nodiscard]] std::optional<Block> Next();
    // The timestamp of the cluster that the last block lay in.
    [[nodiscard]] UINT64 ClusterTicks() const { return m_clusterTicks; }
    // Whether bytes were passed over, or are missing at the end, since Rewind.
    [[nodiscard]] bool IsDamaged() const { return m_damaged; }

  private:
    void StepAtTopLevel();
    [[nodiscard]] std::optional<Block> StepInCluster();
    [[nodiscard]] std::optional<Block> ReadPart(const Element& part);
    [[nodiscard]] std::optional<Block> ReadGroup(const Element& group);
    [[nodiscard]] std::optional<Block> ReadBlock(const Element& element);
    [[nodiscard]] std::optional<Element> FirstAddition(const Element& additions) const;
    [[nodiscard]] UINT64 PaddingOf(const Element& element) const;
    void LookForCluster();

    const EbmlReader& m_reader;
    const Element m_segment;
    UINT64 m_position;
    std::optional<Element> m_cluster; // the one that the position is in
    UINT64 m_clusterTicks = 0;
    bool m_damaged = false;
};

} // namespace matroska

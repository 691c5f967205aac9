// IndexBuilder: what the indexers of both codecs share: it gathers units into pictures and sorts these for showing.
//
// Owner: holds the index until Take. Threads: one at a time.
#pragma once

#include <set>
#include <utility>

#include "sources/annexb/picture_index.h"
#include "sources/annexb/unit_scanner.h"

namespace annexb {

class IndexBuilder {
  public:
    // A day of sixty pictures a second does not reach it; a file made of the smallest units needs five times its size
    // in memory.
    static constexpr size_t kMaxPictures = size_t{4} * 1024 * 1024;
    // No more of one is read; real ones stay far below.
    static constexpr size_t kMaxParameterSetBytes = size_t{64} * 1024;

    explicit IndexBuilder(size_t mostPictures = kMaxPictures) : m_mostPictures(mostPictures) {}

    // A unit in front of the next picture.
    void AddPrefix(const UnitExtent& unit);
    // A unit that begins nothing: it stays with the prefix, if one has begun, else with the picture before.
    void AddOfOtherLayer(const UnitExtent& unit);
    // The first slice of a picture, to which the prefix belongs. Behind the most pictures it is passed over as damage,
    // and so is all that follows.
    void BeginPicture(const UnitExtent& unit, UINT32 sequence, INT32 order, bool keyframe);
    // Whatever else belongs to the picture that was begun last.
    void Extend(const UnitExtent& unit);
    // The second field of the picture that was begun last.
    void JoinField(const UnitExtent& unit, INT32 order);
    // Keeps the first set of each kind and number for the sequence header.
    void AddParameterSet(BYTE kind, UINT32 id, codecs::ByteView unit);

    void MarkDamaged() { m_index.isDamaged = true; }
    void SetShape(const codecs::PictureShape& shape, BYTE profile, BYTE level);
    [[nodiscard]] PictureIndex Take();

  private:
    PictureIndex m_index;
    const size_t m_mostPictures;
    bool m_isFull = false;
    std::optional<UINT64> m_prefixStart;
    std::set<std::pair<BYTE, UINT32>> m_knownSets;
};

} // namespace annexb

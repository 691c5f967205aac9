// HevcIndexer: goes through an H.265 byte stream once and finds its pictures.
//
// Errors: a unit that cannot be understood stays with the picture before it, and the index is marked as damaged.
#pragma once

#include <map>

#include "sources/annexb/index_builder.h"
#include "sources/annexb/parameter_sets.h"

namespace annexb {

class HevcIndexer {
  public:
    explicit HevcIndexer(const source::ByteSource& source) : m_source(source), m_builder(source) {}

    [[nodiscard]] PictureIndex Run();

  private:
    // The first segment of a picture's first slice (7.3.6.1).
    struct Slice {
        BYTE type = 0; // of the unit
        BYTE temporalId = 0;
        UINT32 pocLsb = 0;
        unsigned pocLsbBits = 0;
        codecs::PictureShape shape;
    };

    void Take(const UnitExtent& unit);
    void TakePrefix(const UnitExtent& unit, BYTE type);
    void TakeSlice(const UnitExtent& unit);
    [[nodiscard]] std::optional<Slice> ParseSlice(codecs::ByteView unit) const;
    [[nodiscard]] INT32 OrderOf(const Slice& slice);

    const source::ByteSource& m_source;
    IndexBuilder m_builder;
    std::map<UINT32, HevcSpsHead> m_sps;
    std::map<UINT32, HevcPpsHead> m_pps;
    bool m_beginsSequence = true; // the next random access picture starts the counting anew
    INT64 m_lastOrder = 0;        // of the last picture that others are counted from
    UINT32 m_sequence = 0;
};

} // namespace annexb

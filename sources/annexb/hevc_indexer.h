// HevcIndexer: goes through an H.265 byte stream once and finds its pictures.
//
// Errors: a unit that cannot be understood stays with the picture before it, and the index is marked as damaged.
#pragma once

#include <map>

#include "codecs/hevc_picture_order.h"
#include "sources/annexb/index_builder.h"

namespace annexb {

class HevcIndexer {
  public:
    explicit HevcIndexer(const source::ByteSource& source) : m_scanner(source, 0, source.Size()) {}

    [[nodiscard]] PictureIndex Run();

  private:
    void Take(const UnitExtent& unit);
    void TakePrefix(const UnitExtent& unit, BYTE type);
    void TakeSlice(const UnitExtent& unit);

    UnitScanner m_scanner;
    IndexBuilder m_builder;
    codecs::HevcPictureOrder m_order;
    std::map<UINT32, codecs::HevcSpsHead> m_sps;
    std::map<UINT32, codecs::HevcPpsHead> m_pps;
};

} // namespace annexb

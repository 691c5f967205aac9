// AvcIndexer: goes through an H.264 byte stream once and finds its pictures.
//
// Errors: a unit that cannot be understood stays with the picture before it, and the index is marked as damaged.
#pragma once

#include <map>

#include "codecs/avc_picture_order.h"
#include "sources/annexb/index_builder.h"

namespace annexb {

class AvcIndexer {
  public:
    explicit AvcIndexer(const source::ByteSource& source) : m_scanner(source, 0, source.Size()) {}

    [[nodiscard]] PictureIndex Run();

  private:
    void Take(const UnitExtent& unit);
    void TakePrefix(const UnitExtent& unit, BYTE type);
    void TakeSlice(const UnitExtent& unit);
    void TakePicture(const UnitExtent& unit, const codecs::AvcSlice& slice, const codecs::AvcSps& sps);

    UnitScanner m_scanner;
    IndexBuilder m_builder;
    codecs::AvcPictureOrder m_order;
    std::map<UINT32, codecs::AvcSps> m_sps;
    std::map<UINT32, codecs::AvcPps> m_pps;
    std::optional<codecs::AvcSlice> m_last; // the last slice of the picture that was begun last
    bool m_pictureIsComplete = true;        // what came since belongs to the next picture
    bool m_isFirstField = false;            // the last picture is a field that the next one may join
    bool m_mayRecover = false;              // the next picture is a recovery point
    UINT32 m_sequence = 0;
};

} // namespace annexb

// PictureIndex: where the pictures of a byte stream lie, and when they are shown.
//
// Units: bytes; shown counts pictures in the order of presentation from 0.
#pragma once

#include <memory>
#include <vector>

#include "codecs/picture_shape.h"
#include "sources/base/byte_source.h"

namespace annexb {

// An access unit, or both of a frame that was coded as two fields.
struct CodedPicture {
    UINT64 start = 0; // of a start code
    UINT64 end = 0;
    UINT32 sequence = 0; // pictures of a later coded video sequence are shown later
    INT32 order = 0;     // picture order count within the sequence
    UINT64 shown = 0;
    bool keyframe = false;
    bool isOneUnit = false; // with its start code alone
};

struct PictureIndex {
    std::vector<CodedPicture> pictures; // in the order of decoding
    codecs::PictureShape shape;
    BYTE profile = 0; // of H.264
    BYTE level = 0;
    std::vector<BYTE> parameterSets; // as a byte stream with start codes of four bytes
    bool isDamaged = false;          // some units could not be understood
};

// Empty when no picture was found.
[[nodiscard]] PictureIndex IndexAvc(const source::ByteSource& source);
[[nodiscard]] PictureIndex IndexHevc(const source::ByteSource& source);

} // namespace annexb

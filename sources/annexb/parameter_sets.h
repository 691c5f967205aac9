// What the sources need of H.265 parameter sets (ITU-T H.265, 7.3.2).
//
// Units: pixels, bits. Errors: none for a set that is damaged.
#pragma once

#include <optional>

#include "codecs/byte_view.h"
#include "codecs/picture_shape.h"

namespace annexb {

struct HevcSpsHead {
    uint32_t id = 0;
    bool separateColourPlanes = false;
    unsigned pocLsbBits = 4;
    codecs::PictureShape shape;
};

struct HevcPpsHead {
    uint32_t id = 0;
    uint32_t spsId = 0;
    bool outputFlagPresent = false;
    unsigned extraSliceHeaderBits = 0;
};

// unit: the whole NAL unit.
[[nodiscard]] std::optional<HevcSpsHead> ParseHevcSpsHead(codecs::ByteView unit);
[[nodiscard]] std::optional<HevcPpsHead> ParseHevcPpsHead(codecs::ByteView unit);

} // namespace annexb

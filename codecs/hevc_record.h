// A HEVCDecoderConfigurationRecord (ISO/IEC 14496-15, 8.3.3) that somebody else wrote, taken apart.
//
// Units: bytes. Owner: the units are views of the record.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

struct HevcRecord {
    bool isSound = false; // version 1, and every reserved bit is set
    size_t lengthBytes = 4;
    std::vector<ByteView> units; // of all arrays
};

// None when the arrays do not fill the bytes exactly.
[[nodiscard]] std::optional<HevcRecord> ParseHevcRecord(ByteView record);

} // namespace codecs

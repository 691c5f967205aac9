// The AVCDecoderConfigurationRecord (ISO/IEC 14496-15), as splitters hand it on.
#pragma once

#include <optional>
#include <vector>

#include "codecs/lacing.h"

namespace codecs {

struct AvcPrivate {
    uint8_t profile = 0;
    uint8_t level = 0;
    size_t lengthBytes = 4;             // of the length in front of each unit of a sample
    std::vector<uint8_t> parameterSets; // each with a 2-byte length in front
};

// As much as the record holds.
[[nodiscard]] AvcPrivate ParseAvcPrivate(ByteView record);

// The sample with 4-byte lengths; what does not fit its length is left out. None for what becomes larger than that.
[[nodiscard]] std::optional<std::vector<uint8_t>> WidenLengths(ByteView sample, size_t lengthBytes, size_t most);

} // namespace codecs

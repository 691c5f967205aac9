// The AVCDecoderConfigurationRecord (ISO/IEC 14496-15), as splitters hand it on.
#pragma once

#include <optional>
#include <vector>

#include "codecs/lacing.h"

namespace matroska {

struct AvcPrivate {
    BYTE profile = 0;
    BYTE level = 0;
    size_t lengthBytes = 4;          // of the length in front of each unit of a sample
    std::vector<BYTE> parameterSets; // each with a 2-byte length in front
};

// As much as the record holds.
[[nodiscard]] AvcPrivate ParseAvcPrivate(Bytes record);

// The sample with 4-byte lengths; what does not fit its length is left out. None for what becomes larger than that.
[[nodiscard]] std::optional<std::vector<BYTE>> WidenLengths(Bytes sample, size_t lengthBytes, size_t most);

} // namespace matroska

// NAL units with lengths in front of them instead of start codes, as samples and configuration records carry them.
//
// Units: bytes; lengths are big-endian numbers. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// The length in front of each unit of a sample.
inline constexpr size_t kSampleLengthSizeBytes = 4;
// The length in front of each parameter set of a sequence header or decoder configuration record.
inline constexpr size_t kParameterSetLengthSizeBytes = 2;

// The sample with 4-byte lengths; what does not fit its length is left out. None for what becomes larger than that.
[[nodiscard]] std::optional<std::vector<uint8_t>> WidenLengths(ByteView sample, size_t lengthBytes, size_t most);

} // namespace codecs

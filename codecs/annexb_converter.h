// Rewrites an Annex B byte stream with a length in front of each NAL unit.
#pragma once

#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// The only start code that is a boundary: 00 00 00 01. The shorter 00 00 01 stays inside the preceding unit.
inline constexpr size_t kStartCodeLengthBytes = 4;
// The length in front of each unit of a sample.
inline constexpr size_t kSampleLengthSizeBytes = 4;
// The length in front of each parameter set of a sequence header or decoder configuration record.
inline constexpr size_t kParameterSetLengthSizeBytes = 2;

// lengthSize: 2 or 4 bytes, big-endian. A unit whose length does not fit is left out.
[[nodiscard]] std::vector<uint8_t> ConvertAnnexB(ByteView byteStream, size_t startCodeLength, size_t lengthSize);

} // namespace codecs

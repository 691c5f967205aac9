// Rewrites an Annex B byte stream with a length in front of each NAL unit.
//
// Units: bytes. Owner: what is returned is the caller's.
#pragma once

#include <array>
#include <vector>

#include "codecs/unit_lengths.h"

namespace codecs {

// The only start code that is a boundary: 00 00 00 01. The shorter 00 00 01 stays inside the preceding unit.
inline constexpr std::array<uint8_t, 4> kStartCode{0, 0, 0, 1};
inline constexpr size_t kStartCodeLengthBytes = kStartCode.size();

// lengthSize: kParameterSetLengthSizeBytes or kSampleLengthSizeBytes. A unit whose length does not fit is left out.
[[nodiscard]] std::vector<uint8_t> ConvertAnnexB(ByteView byteStream, size_t startCodeLength, size_t lengthSize);

} // namespace codecs

// Rewrites an Annex B byte stream with a length in front of each NAL unit.
//
// Units: bytes. Owner: what is returned is the caller's.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <vector>

#include "codecs/unit_lengths.h"

namespace codecs {

// The only start code that is a boundary: 00 00 00 01. The shorter 00 00 01 stays inside the preceding unit.
inline constexpr std::array<uint8_t, 4> kStartCode{0, 0, 0, 1};
inline constexpr size_t kStartCodeLengthBytes = kStartCode.size();

// lengthSize: kParameterSetLengthSizeBytes or kSampleLengthSizeBytes. A unit whose length does not fit is left out.
[[nodiscard]] std::vector<uint8_t> ConvertAnnexB(ByteView byteStream, size_t startCodeLength, size_t lengthSize);

// The same in place, with lengths of kSampleLengthSizeBytes, for a stream below 4 GiB: what of it is left. A stream
// without a start code in front of its first unit has no room for that one's length; it is left alone, and the answer
// is none.
[[nodiscard]] std::optional<std::span<uint8_t>> ReplaceStartCodes(std::span<uint8_t> byteStream);

} // namespace codecs

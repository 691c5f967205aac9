// The NAL units of an Annex B byte stream as the standards have them: start codes of three bytes and of four, and no
// zeros behind a unit.
//
// Units: bytes. Owner: the units are views of the stream; what is built is the caller's.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// At least two zeros and a 1.
[[nodiscard]] bool BeginsWithStartCode(ByteView bytes);

// In order; nothing between two start codes is no unit. Bytes in front of the first start code are a unit, too.
[[nodiscard]] std::vector<ByteView> FindAnnexBUnits(ByteView byteStream);

// The units with lengths of kSampleLengthSizeBytes in front of them. One that is too long for its length is left out.
[[nodiscard]] std::vector<uint8_t> ConvertAnnexBUnits(ByteView byteStream);

// The same in place, for a stream below 4 GiB: what of it is left. None when a unit has no room for its length in front
// of it, as with a start code of three bytes; the stream is as it was then.
[[nodiscard]] std::optional<std::span<uint8_t>> ConvertAnnexBUnitsInPlace(std::span<uint8_t> byteStream);

} // namespace codecs

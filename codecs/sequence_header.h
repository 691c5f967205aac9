// The sequence header of an H.264 or H.265 media type, as splitters fill it: parameter sets behind start codes, behind
// 2-byte lengths, or none.
//
// Units: bytes; lengths are big-endian numbers. Owner: the units are views of the header.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// What the media type says beside the header.
struct SequenceFacts {
    uint8_t profile = 0;
    uint8_t level = 0;
    size_t lengthBytes = 4; // of the length in front of each unit of a sample; other sizes than 1, 2 and 4 count as 4
};

// The longest unit that a decoder configuration record holds.
inline constexpr size_t kMaxRecordUnitBytes = 65535;

// In order; none is empty. A length of 0, or less than a length, ends them. No value when a length points behind the
// last byte.
[[nodiscard]] std::optional<std::vector<ByteView>> FindHeaderUnits(ByteView header);

// Puts a unit behind those that are there, unless it is among them already, or the record cannot measure it, or there
// are so many already.
void AddUnit(std::vector<ByteView>& units, ByteView unit, size_t most);

// lengthSizeMinusOne of a record.
[[nodiscard]] uint8_t LengthSizeMinusOne(const SequenceFacts& facts);

} // namespace codecs

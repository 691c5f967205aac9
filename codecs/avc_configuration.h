// The AVCDecoderConfigurationRecord of ISO/IEC 14496-15, the codec private data of H.264: built as this muxer writes
// it, and parsed as others may have written it.
//
// Units: bytes; lengths are big-endian numbers. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

struct AvcConfiguration {
    uint8_t profile = 0;
    uint8_t level = 0;
    size_t lengthBytes = 4;             // of the length in front of each unit of a sample: 1 to 4
    std::vector<uint8_t> parameterSets; // each with a 2-byte length in front, extensions of sequence ones at the end
    bool isWhole = false;               // the counts and lengths tell every byte
};

// units: NAL units, each behind a 2-byte length; a length of 0, or less than a length, ends them. Only parameter sets
// get into the record. No value when a length points behind the last byte.
[[nodiscard]] std::optional<std::vector<uint8_t>> BuildAvcConfiguration(ByteView units, uint8_t profile, uint8_t level);

// As much as the record holds: nothing of a head that is cut off, and the whole ones of its parameter sets.
[[nodiscard]] AvcConfiguration ParseAvcConfiguration(ByteView record);

} // namespace codecs

// The HEVCDecoderConfigurationRecord of ISO/IEC 14496-15, 8.3.3, as the standard has it: version 1, every flag of the
// profile, and one array for each type of unit.
//
// Units: bytes; numbers are big-endian. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/sequence_header.h"

namespace codecs {

// header: parameter sets behind start codes or 2-byte lengths, or a record: one of version 1 that is sound stays as it
// is, another one is built again from its units. Without a sequence parameter set the facts stand for it: the sets are
// then expected in the samples. What the record cannot count or measure is left out, and so are second copies, units of
// other layers and messages about single pictures. No value when the lengths contradict the bytes.
[[nodiscard]] std::optional<std::vector<uint8_t>> BuildWholeHevcConfiguration(ByteView header,
                                                                              const SequenceFacts& facts);

} // namespace codecs

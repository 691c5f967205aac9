// The AVCDecoderConfigurationRecord of ISO/IEC 14496-15, 5.3.3, as the standard has it: everything taken from the
// sequence parameter sets, and every reserved bit set.
//
// Units: bytes; numbers are big-endian. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/sequence_header.h"

namespace codecs {

// header: parameter sets behind start codes or 2-byte lengths, or a whole record already. Without a sequence parameter
// set the facts stand for it: the sets are then expected in the samples. Sets that the record cannot count or measure
// are left out, and so is a second copy. No value when the lengths contradict the bytes, or when the first sequence
// parameter set is damaged in its head.
[[nodiscard]] std::optional<std::vector<uint8_t>> BuildWholeAvcConfiguration(ByteView header,
                                                                             const SequenceFacts& facts);

} // namespace codecs

// The rule for NAL units of a byte stream, restated byte by byte: a witness that shares no search with the product.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/byte_view.h"

namespace fuzz {

// In order, without their start codes, which have so many bytes.
[[nodiscard]] std::vector<std::vector<std::uint8_t>> PlainUnits(codecs::ByteView stream, size_t startCodeLength);

// The units, each behind its length in so many bytes; those whose length does not fit are left out.
[[nodiscard]] std::vector<std::uint8_t> WithLengths(const std::vector<std::vector<std::uint8_t>>& units,
                                                    size_t lengthBytes);

// On the heap, without a byte more than there is, so that a read behind the last one is seen.
[[nodiscard]] std::vector<std::uint8_t> ExactCopy(codecs::ByteView bytes);

} // namespace fuzz

// EBML written by hand, for tests of the reader: elements are byte strings, glued together.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace test_support {

using RawBytes = std::vector<uint8_t>;

[[nodiscard]] RawBytes Concatenate(std::initializer_list<RawBytes> parts);
// The identifier as its bytes, most significant first.
[[nodiscard]] RawBytes RawId(uint32_t id);
// The size in a field of that many bytes.
[[nodiscard]] RawBytes RawSize(uint64_t size, uint32_t fieldBytes = 1);
[[nodiscard]] RawBytes RawElement(uint32_t id, const RawBytes& data, uint32_t sizeFieldBytes = 1);
[[nodiscard]] RawBytes RawUnsigned(uint32_t id, uint64_t value);
[[nodiscard]] RawBytes RawText(uint32_t id, std::string_view text);
// Track below 128.
[[nodiscard]] RawBytes RawSimpleBlock(uint8_t track, int16_t relativeTime, uint8_t flags, const RawBytes& payload);

} // namespace test_support

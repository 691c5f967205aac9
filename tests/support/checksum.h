// CRC-32 as in EBML's CRC-32 element and in most other places (IEEE 802.3, reflected).
#pragma once

#include <cstdint>
#include <span>

namespace test_support {

[[nodiscard]] uint32_t Crc32(std::span<const uint8_t> bytes);

} // namespace test_support

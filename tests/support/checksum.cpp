#include "tests/support/checksum.h"

#include <array>

namespace test_support {

namespace {

constexpr uint32_t kReflectedPolynomial = 0xedb88320;

constexpr std::array<uint32_t, 256> MakeTable() {
    std::array<uint32_t, 256> table{};
    for (uint32_t i = 0; i < table.size(); ++i) {
        uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? value >> 1 ^ kReflectedPolynomial : value >> 1;
        }
        table[i] = value;
    }
    return table;
}

constexpr std::array<uint32_t, 256> kTable = MakeTable();

} // namespace

uint32_t Crc32(std::span<const uint8_t> bytes) {
    uint32_t crc = 0xffffffff;
    for (const uint8_t byte : bytes) {
        crc = crc >> 8 ^ kTable[(crc ^ byte) & 0xff];
    }
    return ~crc;
}

} // namespace test_support

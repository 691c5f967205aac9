// BitWriter: writes bits, most significant first, and Exp-Golomb numbers, for test streams.
#pragma once

#include <vector>

#include <cstdint>

namespace mkv_test {

class BitWriter {
  public:
    BitWriter& Bits(uint64_t value, unsigned count) {
        while (count-- > 0) {
            m_bits.push_back((value >> count & 1) != 0);
        }
        return *this;
    }
    BitWriter& Flag(bool value) { return Bits(value ? 1 : 0, 1); }
    BitWriter& UE(uint64_t value) {
        unsigned zeros = 0;
        while ((value + 1) >> (zeros + 1) != 0) {
            ++zeros;
        }
        return Bits(0, zeros).Bits(value + 1, zeros + 1);
    }
    BitWriter& UEs(uint64_t value, unsigned count) {
        while (count-- > 0) {
            UE(value);
        }
        return *this;
    }

    [[nodiscard]] size_t Size() const { return m_bits.size(); }

    // The first so many bits, filled up with zero bits to whole bytes.
    [[nodiscard]] std::vector<uint8_t> BytesOf(size_t bits) const {
        std::vector<uint8_t> bytes((bits + 7) / 8);
        for (size_t i = 0; i < bits; ++i) {
            bytes[i / 8] = static_cast<uint8_t>(bytes[i / 8] | (m_bits[i] ? 0x80 >> i % 8 : 0));
        }
        return bytes;
    }
    [[nodiscard]] std::vector<uint8_t> Bytes() const { return BytesOf(m_bits.size()); }

  private:
    std::vector<bool> m_bits;
};

} // namespace mkv_test

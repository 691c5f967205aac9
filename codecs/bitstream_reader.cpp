#include "codecs/bitstream_reader.h"

#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr unsigned kMaxBitsAtOnce = 32;
// One zero more, and the number would not fit 32 bits.
constexpr unsigned kMaxExpGolombZeroBits = 31;

} // namespace

bool BitstreamReader::Take(size_t count) {
    if (m_valid && count > BitsLeft()) {
        Invalidate();
    }
    return m_valid;
}

unsigned BitstreamReader::NextBit() {
    const unsigned byte = m_bytes[m_position / kBitsInByte];
    const unsigned shift = kBitsInByte - 1 - static_cast<unsigned>(m_position % kBitsInByte);
    ++m_position;
    return byte >> shift & 1U;
}

uint32_t BitstreamReader::ReadBits(unsigned count) {
    if (count > kMaxBitsAtOnce) {
        Invalidate();
    }
    if (!Take(count)) {
        return 0;
    }
    uint32_t value = 0;
    for (unsigned i = 0; i < count; ++i) {
        value = value << 1 | NextBit();
    }
    return value;
}

void BitstreamReader::SkipBits(size_t count) {
    if (Take(count)) {
        m_position += count;
    }
}

uint32_t BitstreamReader::ReadUE() {
    unsigned zeroBits = 0;
    while (m_valid && !ReadFlag()) {
        if (++zeroBits > kMaxExpGolombZeroBits) {
            Invalidate();
        }
    }
    const uint32_t suffix = ReadBits(zeroBits <= kMaxExpGolombZeroBits ? zeroBits : 0);
    return m_valid ? (uint32_t{1} << zeroBits) - 1 + suffix : 0;
}

uint32_t BitstreamReader::ReadUE(uint32_t maximum) {
    const uint32_t value = ReadUE();
    if (value > maximum) {
        Invalidate();
        return 0;
    }
    return value;
}

int32_t BitstreamReader::ReadSE() {
    const int64_t code = ReadUE();
    return static_cast<int32_t>(code % 2 != 0 ? (code + 1) / 2 : -(code / 2));
}

} // namespace codecs

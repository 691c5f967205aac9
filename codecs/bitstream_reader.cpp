#include "codecs/bitstream_reader.h"

namespace mkv {

namespace {

constexpr unsigned kBitsInByte = 8;
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

UINT32 BitstreamReader::ReadBits(unsigned count) {
    if (count > kMaxBitsAtOnce) {
        Invalidate();
    }
    if (!Take(count)) {
        return 0;
    }
    UINT32 value = 0;
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

UINT32 BitstreamReader::ReadUE() {
    unsigned zeroBits = 0;
    while (m_valid && !ReadFlag()) {
        if (++zeroBits > kMaxExpGolombZeroBits) {
            Invalidate();
        }
    }
    const UINT32 suffix = ReadBits(zeroBits <= kMaxExpGolombZeroBits ? zeroBits : 0);
    return m_valid ? (UINT32{1} << zeroBits) - 1 + suffix : 0;
}

UINT32 BitstreamReader::ReadUE(UINT32 maximum) {
    const UINT32 value = ReadUE();
    if (value > maximum) {
        Invalidate();
        return 0;
    }
    return value;
}

} // namespace mkv

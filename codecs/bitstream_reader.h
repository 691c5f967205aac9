// BitstreamReader: reads bits, most significant first, and Exp-Golomb numbers from a buffer.
//
// Owner: a view; the caller keeps the bytes.
// Errors: a value that does not lie inside the buffer as a whole, or is out of range, reads as 0 and invalidates
// the reader; every later read gives 0 too. So a parser needs no check after each read, only bounded loops.
#pragma once

#include "codecs/byte_view.h"

namespace codecs {

class BitstreamReader {
  public:
    explicit BitstreamReader(ByteView bytes) : m_bytes(bytes) {}

    // At most 32 bits.
    uint32_t ReadBits(unsigned count);
    bool ReadFlag() { return ReadBits(1) != 0; }
    void SkipBits(size_t count);

    // Unsigned Exp-Golomb: 0 to 2^32 - 2.
    uint32_t ReadUE();
    // A number above the maximum invalidates the reader.
    uint32_t ReadUE(uint32_t maximum);
    // Signed Exp-Golomb.
    int32_t ReadSE();
    // It takes as many bits as the unsigned form.
    void SkipSE() { ReadUE(); }

    [[nodiscard]] bool IsValid() const { return m_valid; }
    void Invalidate() { m_valid = false; }

  private:
    [[nodiscard]] size_t BitsLeft() const { return m_bytes.size() * 8 - m_position; }
    unsigned NextBit();
    bool Take(size_t count);

    ByteView m_bytes;
    size_t m_position = 0; // in bits
    bool m_valid = true;
};

} // namespace codecs

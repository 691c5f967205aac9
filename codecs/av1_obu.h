// Av1ObuReader: the open bitstream units of a temporal unit, as the AV1 specification (5.3) has them, in the form with
// sizes ("low overhead"); the last one may go without.
//
// Units: bytes. Owner: a view; the caller keeps the bytes. Errors: a unit that does not lie inside the bytes as a whole
// is not there, and damage is told; the reader ends.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

enum class Av1ObuType : uint8_t {
    SequenceHeader = 1,
    TemporalDelimiter = 2,
    FrameHeader = 3,
    TileGroup = 4,
    Metadata = 5,
    Frame = 6,
    RedundantFrameHeader = 7,
    TileList = 8,
    Padding = 15,
};

struct Av1Obu {
    Av1ObuType type{};
    bool hasSizeField = false;
    ByteView header;  // one byte, or two with the extension
    ByteView payload; // what follows header and size
    ByteView whole;
};

struct Leb128 {
    uint64_t value = 0;
    size_t bytes = 0; // that it takes
};

// A number of up to 32 bits (4.10.5) in up to eight bytes, at the beginning of these; none when it does not end.
[[nodiscard]] std::optional<Leb128> ReadLeb128(ByteView bytes);

class Av1ObuReader {
  public:
    explicit Av1ObuReader(ByteView bytes) : m_rest(bytes) {}

    // None at the end, and when what follows is no unit.
    [[nodiscard]] std::optional<Av1Obu> Next();
    [[nodiscard]] bool IsDamaged() const { return m_isDamaged; }

  private:
    ByteView m_rest;
    bool m_isDamaged = false;
};

// At the end of the bytes, with its size.
void AppendSizedAv1Obu(std::vector<uint8_t>& bytes, const Av1Obu& obu);

// Whether all of the bytes are units; none at all are not.
[[nodiscard]] bool AreAv1Obus(ByteView bytes);

} // namespace codecs

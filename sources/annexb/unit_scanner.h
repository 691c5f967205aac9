// UnitScanner: finds the NAL units of an Annex B byte stream (ITU-T H.264 and H.265, annex B), whatever the length of
// their start codes.
//
// Units: bytes from the start of the source. Owner: holds a view of the source. Threads: one at a time.
#pragma once

#include <optional>
#include <vector>

#include "sources/base/byte_source.h"

namespace annexb {

// From the unit's header on, without start code and zeros behind it.
struct UnitExtent {
    UINT64 start = 0;
    UINT64 end = 0;

    [[nodiscard]] UINT64 Size() const { return end - start; }
};

class UnitScanner {
  public:
    UnitScanner(const source::ByteSource& source, UINT64 start, UINT64 end);

    // None at the end; empty units are passed over.
    [[nodiscard]] std::optional<UnitExtent> Next();

  private:
    [[nodiscard]] bool Refill();

    const source::ByteSource& m_source;
    UINT64 m_position; // of the next byte
    UINT64 m_end;
    std::vector<BYTE> m_window;
    size_t m_next = 0; // in the window
    size_t m_held = 0;
    UINT64 m_zeros = 0; // right before the next byte
    std::optional<UINT64> m_unitStart;
};

} // namespace annexb

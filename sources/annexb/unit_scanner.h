// UnitScanner: finds the NAL units of an Annex B byte stream (ITU-T H.264 and H.265, annex B), whatever the length of
// their start codes.
//
// Units: bytes from the start of the source. Owner: holds a view of the source. Threads: one at a time.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"
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
    // Of bytes in memory.
    explicit UnitScanner(codecs::ByteView bytes) : m_window(bytes), m_end(bytes.size()) {}
    UnitScanner(const UnitScanner&) = delete;
    UnitScanner& operator=(const UnitScanner&) = delete;

    // None at the end; empty units are passed over.
    [[nodiscard]] std::optional<UnitExtent> Next();
    // The first so many bytes of the unit that Next found last; good until the next call of either.
    [[nodiscard]] codecs::ByteView HeadOf(const UnitExtent& unit, size_t most);

  private:
    [[nodiscard]] bool Refill();

    const source::ByteSource* m_source = nullptr; // none: the bytes are all there
    std::vector<BYTE> m_buffer;
    std::vector<BYTE> m_head;
    codecs::ByteView m_window;
    size_t m_next = 0;     // in the window
    UINT64 m_position = 0; // of that byte in the source
    UINT64 m_end;
    UINT64 m_zeros = 0; // right before it
    std::optional<UINT64> m_unitStart;
};

} // namespace annexb

// NALUnit: one network abstraction layer unit of an H.264 or H.265 stream, found in a buffer.
//
// Owner: a view; the buffer's holder keeps the bytes.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "win/platform.h"

namespace mkv {

class NALUnit {
  public:
    explicit NALUnit(std::span<const BYTE> payload) : m_payload(payload) {}

    // From the header on, without start code or length.
    [[nodiscard]] std::span<const BYTE> Payload() const { return m_payload; }
    [[nodiscard]] size_t Length() const { return m_payload.size(); }
    // The first byte; 0 for an empty unit.
    [[nodiscard]] BYTE Header() const { return m_payload.empty() ? BYTE{0} : m_payload.front(); }
    [[nodiscard]] BYTE AvcType() const { return Header() & 0x1f; }
    [[nodiscard]] BYTE HevcType() const { return Header() >> 1 & 0x3f; }

  private:
    std::span<const BYTE> m_payload;
};

// The raw payload of a unit: without its header of so many bytes, and without the 03 that keeps 00 00 from looking like
// a start code. Empty for a unit that is shorter than its header.
[[nodiscard]] std::vector<BYTE> RawPayload(std::span<const BYTE> unit, size_t headerBytes);

// NALUnitScanner: takes an Annex B byte stream apart. Only start codes of the one given length count; a shorter one
// stays inside its unit. Bytes before the first start code are a unit too, unless they are all zero (Annex B's
// leading zero bytes); a buffer without any start code is one unit. Nothing between two start codes is no unit.
class NALUnitScanner {
  public:
    // startCodeLength: at least 2 bytes, all zero except the last, which is 1.
    NALUnitScanner(std::span<const BYTE> buffer, size_t startCodeLength);

    std::optional<NALUnit> Next();

  private:
    // The offset of the first start code that lies behind `from` as a whole; the buffer's size when there is none.
    [[nodiscard]] size_t FindStartCode(size_t from) const;

    std::span<const BYTE> m_buffer;
    size_t m_startCodeLength;
    size_t m_unitStart = 0;
};

} // namespace mkv

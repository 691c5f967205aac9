// NALUnit: one network abstraction layer unit of an H.264 or H.265 stream, found in a buffer.
//
// Units: bytes. Owner: a view; the buffer's holder keeps the bytes. Errors: none are reported.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr size_t kAvcHeaderBytes = 1;
inline constexpr size_t kHevcHeaderBytes = 2;

// nal_unit_type of H.264 (ITU-T H.264, table 7-1).
enum AvcNalType : uint8_t {
    kAvcNonIdrSlice = 1,
    kAvcPartitionA = 2,
    kAvcIdrSlice = 5,
    kAvcSeiUnit = 6,
    kAvcSpsUnit = 7,
    kAvcPpsUnit = 8,
    kAvcDelimiter = 9,
    kAvcSpsExtensionUnit = 13,
    kAvcSlicePrefix = 14,
    kAvcLastReservedPrefix = 18,
};

// nal_unit_type of H.265 (ITU-T H.265, table 7-1).
enum HevcNalType : uint8_t {
    kHevcFirstRadl = 6,
    kHevcLastRasl = 9,
    kHevcLastSubLayerPicture = 15,
    kHevcFirstIrap = 16,
    kHevcFirstIdr = 19,
    kHevcLastIdr = 20,
    kHevcLastIrap = 23,
    kHevcLastSlice = 31,
    kHevcVpsUnit = 32,
    kHevcSpsUnit = 33,
    kHevcPpsUnit = 34,
    kHevcDelimiter = 35,
    kHevcEndOfSequence = 36,
    kHevcEndOfStream = 37,
    kHevcPrefixSei = 39,
    kHevcFirstReservedPrefix = 41,
    kHevcLastReservedPrefix = 44,
    kHevcFirstUnspecifiedPrefix = 48,
    kHevcLastUnspecifiedPrefix = 55,
};

class NALUnit {
  public:
    explicit NALUnit(ByteView payload) : m_payload(payload) {}

    // From the header on, without start code or length.
    [[nodiscard]] ByteView Payload() const { return m_payload; }
    [[nodiscard]] size_t Length() const { return m_payload.size(); }
    // The first byte; 0 for an empty unit.
    [[nodiscard]] uint8_t Header() const { return m_payload.empty() ? uint8_t{0} : m_payload.front(); }
    [[nodiscard]] uint8_t AvcType() const { return Header() & 0x1f; }
    [[nodiscard]] uint8_t AvcRefIdc() const { return Header() >> 5 & 3; } // 0: no picture refers to this one
    [[nodiscard]] uint8_t HevcType() const { return Header() >> 1 & 0x3f; }
    // 0 is the base layer; 0 for a unit without a whole header.
    [[nodiscard]] uint8_t HevcLayerId() const;
    // 0 is the lowest sub-layer; 0 for a unit without a whole header, 255 for a value that the standard forbids.
    [[nodiscard]] uint8_t HevcTemporalId() const;

  private:
    ByteView m_payload;
};

// The raw payload of a unit: without its header of so many bytes, and without the 03 that keeps 00 00 from looking like
// a start code. Empty for a unit that is shorter than its header.
[[nodiscard]] std::vector<uint8_t> RawPayload(ByteView unit, size_t headerBytes);

// NALUnitScanner: takes an Annex B byte stream apart. Only start codes of the one given length count; a shorter one
// stays inside its unit. Bytes before the first start code are a unit too, unless they are all zero (Annex B's
// leading zero bytes); a buffer without any start code is one unit. Nothing between two start codes is no unit.
class NALUnitScanner {
  public:
    // startCodeLength: at least 2 bytes, all zero except the last, which is 1.
    NALUnitScanner(ByteView buffer, size_t startCodeLength);

    std::optional<NALUnit> Next();

  private:
    // The offset of the first start code that lies behind `from` as a whole; the buffer's size when there is none.
    [[nodiscard]] size_t FindStartCode(size_t from) const;

    ByteView m_buffer;
    size_t m_startCodeLength;
    size_t m_unitStart = 0;
};

} // namespace codecs

// CElementBytes: the heads and numbers of a few elements, byte by byte as libebml renders them, for where its objects
// would cost more than the bytes.
// Units: bytes. Owner: whoever writes them. Threads: one. Errors: none; all of one block or cluster fits.
#pragma once

#include <algorithm>
#include <array>
#include <span>

#include <ebml/EbmlElement.h>

#include "win/platform.h"

namespace mkv {

class CElementBytes {
  public:
    void addHead(const libebml::EbmlId& id, UINT64 dataBytes) {
        id.Fill(end());
        m_size += id.GetLength();
        m_size += static_cast<size_t>(libebml::CodedValueLength(dataBytes, sizeLength(dataBytes), end()));
    }
    // The whole of an element that is a number.
    void addNumber(const libebml::EbmlId& id, UINT64 value) {
        const size_t length = numberLength(value);
        addHead(id, length);
        addBigEndian(value, length);
    }
    // The same of an element whose number is signed; the value is none below 0, and less than 62 bits.
    void addSigned(const libebml::EbmlId& id, UINT64 value) {
        const size_t length = numberLength(value << 1);
        addHead(id, length);
        addBigEndian(value, length);
    }
    void addBigEndian(UINT64 value, size_t length) {
        for (size_t i = length; i-- > 0; value >>= kBitsInByte) {
            end()[i] = static_cast<BYTE>(value);
        }
        m_size += length;
    }

    void addBytes(std::span<const BYTE> bytes) {
        std::copy(bytes.begin(), bytes.end(), end());
        m_size += bytes.size();
    }

    [[nodiscard]] std::span<const BYTE> bytes() const { return {m_bytes.data(), m_size}; }

    // Of an element with its head.
    [[nodiscard]] static UINT64 elementBytes(const libebml::EbmlId& id, UINT64 dataBytes) {
        return id.GetLength() + static_cast<UINT64>(sizeLength(dataBytes)) + dataBytes;
    }
    // As few bytes as the number needs, but one for 0.
    [[nodiscard]] static size_t numberLength(UINT64 value) {
        size_t length = 1;
        while (length < sizeof(value) && value >> (length * kBitsInByte) != 0) {
            ++length;
        }
        return length;
    }

  private:
    static constexpr unsigned kBitsInByte = 8;

    [[nodiscard]] static int sizeLength(UINT64 dataBytes) { return libebml::CodedSizeLength(dataBytes, 0); }
    [[nodiscard]] BYTE* end() { return m_bytes.data() + m_size; }

    static constexpr size_t kMaxBytes = 48; // a block group's head, its block's and that one's own are half of it
    std::array<BYTE, kMaxBytes> m_bytes;    // the first m_size are set
    size_t m_size = 0;
};

} // namespace mkv

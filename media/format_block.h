// FormatBlock: the format block of a media type, as bytes that nothing reads beyond.
//
// Owner: a view; the media type keeps the bytes.
// Errors: whatever does not lie inside the block as a whole is not there (no value).
#pragma once

#include <cstring>
#include <optional>
#include <span>
#include <vector>

#include "win/platform.h"

namespace media {

using ByteView = std::span<const BYTE>;

inline std::vector<BYTE> CopyOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

class FormatBlock {
  public:
    explicit FormatBlock(const AM_MEDIA_TYPE& type)
        : m_bytes(type.pbFormat, type.pbFormat == nullptr ? 0 : type.cbFormat) {}

    [[nodiscard]] ByteView Bytes() const { return m_bytes; }

    // A copy, since nothing promises that the block is aligned.
    template <typename Structure>
    [[nodiscard]] std::optional<Structure> Read(size_t offset = 0) const {
        const std::optional<ByteView> bytes = Slice(offset, sizeof(Structure));
        if (!bytes) {
            return std::nullopt;
        }
        Structure structure;
        std::memcpy(&structure, bytes->data(), sizeof(Structure));
        return structure;
    }

    [[nodiscard]] std::optional<ByteView> Slice(size_t offset, size_t size) const {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset) {
            return std::nullopt;
        }
        return m_bytes.subspan(offset, size);
    }

    // Everything from the offset to the end, possibly nothing.
    [[nodiscard]] std::optional<ByteView> From(size_t offset) const {
        return offset > m_bytes.size() ? std::nullopt : Slice(offset, m_bytes.size() - offset);
    }

  private:
    ByteView m_bytes;
};

} // namespace media

#include "codecs/lacing.h"

#include <bit>

namespace matroska {

namespace {

constexpr BYTE kFixedLacing = 4;
constexpr BYTE kEbmlLacing = 6;
constexpr BYTE kXiphContinues = 255;
constexpr size_t kMaxNumberBytes = 8;

// Takes sizes off the front of a payload. What is not there invalidates it for good.
class SizeReader {
  public:
    explicit SizeReader(Bytes payload) : m_rest(payload) {}

    [[nodiscard]] UINT64 ReadByte() {
        if (m_rest.empty()) {
            m_valid = false;
            return 0;
        }
        const BYTE byte = m_rest.front();
        m_rest = m_rest.subspan(1);
        return byte;
    }
    [[nodiscard]] UINT64 ReadXiph() {
        UINT64 size = 0;
        UINT64 byte = kXiphContinues;
        while (m_valid && byte == kXiphContinues) {
            byte = ReadByte();
            size += byte;
        }
        return size;
    }
    // An EBML number, as the offset from the middle of its range when it is signed.
    [[nodiscard]] INT64 ReadNumber(bool isSigned) {
        const UINT64 first = ReadByte();
        const size_t length = static_cast<size_t>(std::countl_zero(static_cast<BYTE>(first))) + 1;
        if (length > kMaxNumberBytes) {
            m_valid = false;
            return 0;
        }
        UINT64 value = first;
        for (size_t i = 1; i < length; ++i) {
            value = value << 8 | ReadByte();
        }
        value &= (UINT64{1} << 7 * length) - 1;
        const INT64 middle = isSigned ? (INT64{1} << (7 * length - 1)) - 1 : 0;
        return static_cast<INT64>(value) - middle;
    }
    [[nodiscard]] bool IsValid() const { return m_valid; }
    [[nodiscard]] Bytes Rest() const { return m_rest; }

  private:
    Bytes m_rest;
    bool m_valid = true;
};

std::vector<UINT64> ReadXiphSizes(SizeReader& reader, size_t count) {
    std::vector<UINT64> sizes;
    for (size_t i = 0; i < count; ++i) {
        sizes.push_back(reader.ReadXiph());
    }
    return sizes;
}

// The first size as it is, each further one as the difference from the one before. A sum below zero becomes a huge
// size, which no payload holds.
std::vector<UINT64> ReadEbmlSizes(SizeReader& reader, size_t count) {
    std::vector<UINT64> sizes;
    UINT64 size = 0;
    for (size_t i = 0; i < count; ++i) {
        size += static_cast<UINT64>(reader.ReadNumber(i > 0));
        sizes.push_back(size);
    }
    return sizes;
}

// The sizes are those of all frames but the last, which takes the rest.
std::optional<std::vector<Bytes>> Cut(Bytes frames, const std::vector<UINT64>& sizes) {
    std::vector<Bytes> parts;
    for (const UINT64 size : sizes) {
        if (size > frames.size()) {
            return {};
        }
        parts.push_back(frames.first(static_cast<size_t>(size)));
        frames = frames.subspan(static_cast<size_t>(size));
    }
    parts.push_back(frames);
    return parts;
}

} // namespace

std::optional<std::vector<Bytes>> TakeFramesApart(Bytes payload, BYTE lacing) {
    if (lacing == 0) {
        return std::vector<Bytes>{payload};
    }
    SizeReader reader(payload);
    const auto sizesBeforeLast = static_cast<size_t>(reader.ReadByte());
    std::vector<UINT64> sizes;
    if (lacing == kXiphLacing) {
        sizes = ReadXiphSizes(reader, sizesBeforeLast);
    } else if (lacing == kEbmlLacing) {
        sizes = ReadEbmlSizes(reader, sizesBeforeLast);
    } else if (lacing == kFixedLacing) {
        const size_t frames = sizesBeforeLast + 1;
        if (reader.Rest().size() % frames != 0) {
            return {};
        }
        sizes.assign(sizesBeforeLast, reader.Rest().size() / frames);
    }
    return reader.IsValid() ? Cut(reader.Rest(), sizes) : std::nullopt;
}

} // namespace matroska

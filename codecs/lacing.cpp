#include "codecs/lacing.h"

#include <bit>

#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr uint8_t kFixedLacing = 4;
constexpr uint8_t kEbmlLacing = 6;
constexpr uint8_t kXiphContinues = 255;
constexpr size_t kMaxNumberBytes = 8;

// Takes sizes off the front of a payload. What is not there invalidates it for good.
class SizeReader {
  public:
    explicit SizeReader(ByteView payload) : m_rest(payload) {}

    [[nodiscard]] uint64_t ReadByte() {
        if (m_rest.empty()) {
            m_valid = false;
            return 0;
        }
        const uint8_t byte = m_rest.front();
        m_rest = m_rest.subspan(1);
        return byte;
    }
    [[nodiscard]] uint64_t ReadXiph() {
        uint64_t size = 0;
        uint64_t byte = kXiphContinues;
        while (m_valid && byte == kXiphContinues) {
            byte = ReadByte();
            size += byte;
        }
        return size;
    }
    // An EBML number, as the offset from the middle of its range when it is signed.
    [[nodiscard]] int64_t ReadNumber(bool isSigned) {
        const uint64_t first = ReadByte();
        const size_t length = static_cast<size_t>(std::countl_zero(static_cast<uint8_t>(first))) + 1;
        if (length > kMaxNumberBytes) {
            m_valid = false;
            return 0;
        }
        uint64_t value = first;
        for (size_t i = 1; i < length; ++i) {
            value = value << kBitsInByte | ReadByte();
        }
        value &= (uint64_t{1} << 7 * length) - 1;
        const int64_t middle = isSigned ? (int64_t{1} << (7 * length - 1)) - 1 : 0;
        return static_cast<int64_t>(value) - middle;
    }
    [[nodiscard]] bool IsValid() const { return m_valid; }
    [[nodiscard]] ByteView Rest() const { return m_rest; }

  private:
    ByteView m_rest;
    bool m_valid = true;
};

std::vector<uint64_t> ReadXiphSizes(SizeReader& reader, size_t count) {
    std::vector<uint64_t> sizes;
    for (size_t i = 0; i < count; ++i) {
        sizes.push_back(reader.ReadXiph());
    }
    return sizes;
}

// The first size as it is, each further one as the difference from the one before. A sum below zero becomes a huge
// size, which no payload holds.
std::vector<uint64_t> ReadEbmlSizes(SizeReader& reader, size_t count) {
    std::vector<uint64_t> sizes;
    uint64_t size = 0;
    for (size_t i = 0; i < count; ++i) {
        size += static_cast<uint64_t>(reader.ReadNumber(i > 0));
        sizes.push_back(size);
    }
    return sizes;
}

// The sizes are those of all frames but the last, which takes the rest.
std::optional<std::vector<ByteView>> Cut(ByteView frames, const std::vector<uint64_t>& sizes) {
    std::vector<ByteView> parts;
    for (const uint64_t size : sizes) {
        if (size > frames.size()) {
            return {};
        }
        parts.push_back(frames.first(static_cast<size_t>(size)));
        frames = frames.subspan(static_cast<size_t>(size));
    }
    parts.push_back(frames);
    return parts;
}

// As many whole 255s as it has, and the rest: 0 for a size that is a multiple.
void AppendXiphSize(std::vector<uint8_t>& output, size_t size) {
    output.insert(output.end(), size / kXiphContinues, kXiphContinues);
    output.push_back(static_cast<uint8_t>(size % kXiphContinues));
}

} // namespace

std::optional<std::vector<ByteView>> TakeFramesApart(ByteView payload, uint8_t lacing) {
    if (lacing == 0) {
        return std::vector<ByteView>{payload};
    }
    SizeReader reader(payload);
    const auto sizesBeforeLast = static_cast<size_t>(reader.ReadByte());
    std::vector<uint64_t> sizes;
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

std::vector<uint8_t> LaceXiph(std::span<const ByteView> frames) {
    std::vector<uint8_t> payload{static_cast<uint8_t>(frames.size() - 1)};
    for (const ByteView frame : frames.first(frames.size() - 1)) {
        AppendXiphSize(payload, frame.size());
    }
    for (const ByteView frame : frames) {
        payload.insert(payload.end(), frame.begin(), frame.end());
    }
    return payload;
}

} // namespace codecs

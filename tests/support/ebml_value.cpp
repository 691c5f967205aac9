#include <bit>
#include <cstddef>

#include "tests/support/ebml_reader.h"

namespace test_support {

namespace {

constexpr size_t kMaxIntegerBytes = 8;

uint64_t BigEndian(ByteView bytes) {
    uint64_t value = 0;
    for (const uint8_t byte : bytes) {
        value = value << 8 | byte;
    }
    return value;
}

} // namespace

ByteView DataOf(ByteView file, const EbmlElement& element) {
    if (element.DataOffset() > file.size() || element.dataSize > file.size() - element.DataOffset()) {
        return {};
    }
    return file.subspan(static_cast<size_t>(element.DataOffset()), static_cast<size_t>(element.dataSize));
}

std::optional<uint64_t> UnsignedOf(ByteView file, const EbmlElement& element) {
    const ByteView data = DataOf(file, element);
    if (data.size() > kMaxIntegerBytes) {
        return std::nullopt;
    }
    return BigEndian(data);
}

std::optional<int64_t> SignedOf(ByteView file, const EbmlElement& element) {
    const ByteView data = DataOf(file, element);
    if (data.size() > kMaxIntegerBytes) {
        return std::nullopt;
    }
    uint64_t value = BigEndian(data);
    if (!data.empty() && data.size() < kMaxIntegerBytes && (data[0] & 0x80) != 0) {
        value |= ~uint64_t{0} << (8 * data.size()); // the sign reaches up
    }
    return static_cast<int64_t>(value);
}

std::optional<double> FloatOf(ByteView file, const EbmlElement& element) {
    const ByteView data = DataOf(file, element);
    switch (data.size()) {
    case 0:
        return 0.0;
    case sizeof(float):
        return static_cast<double>(std::bit_cast<float>(static_cast<uint32_t>(BigEndian(data))));
    case sizeof(double):
        return std::bit_cast<double>(BigEndian(data));
    default:
        return std::nullopt;
    }
}

std::string TextOf(ByteView file, const EbmlElement& element) {
    const ByteView data = DataOf(file, element);
    std::string text(data.begin(), data.end());
    return text.substr(0, text.find('\0'));
}

} // namespace test_support

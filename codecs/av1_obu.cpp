#include "codecs/av1_obu.h"

namespace codecs {

namespace {

constexpr uint8_t kForbiddenBit = 0x80;
constexpr unsigned kTypeShift = 3;
constexpr uint8_t kTypeMask = 0xf;
constexpr uint8_t kExtensionFlag = 4;
constexpr uint8_t kSizeFlag = 2;

constexpr size_t kMaxLebBytes = 8;
constexpr unsigned kLebBits = 7;
constexpr uint8_t kLebMoreFlag = 0x80;

void AppendLeb128(std::vector<uint8_t>& bytes, size_t value) {
    for (; value >> kLebBits != 0; value >>= kLebBits) {
        bytes.push_back(static_cast<uint8_t>(value | kLebMoreFlag));
    }
    bytes.push_back(static_cast<uint8_t>(value));
}

} // namespace

std::optional<Leb128> ReadLeb128(ByteView bytes) {
    Leb128 number;
    while (number.bytes < bytes.size() && number.bytes < kMaxLebBytes) {
        const uint8_t byte = bytes[number.bytes];
        number.value |= static_cast<uint64_t>(byte & ~kLebMoreFlag) << (kLebBits * number.bytes);
        ++number.bytes;
        if ((byte & kLebMoreFlag) == 0) {
            return number.value <= UINT32_MAX ? std::optional(number) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<Av1Obu> Av1ObuReader::Next() {
    if (m_rest.empty() || m_isDamaged) {
        return std::nullopt;
    }
    m_isDamaged = true; // unless it is found to be whole
    const uint8_t first = m_rest[0];
    const size_t headerBytes = (first & kExtensionFlag) != 0 ? 2 : 1;
    if ((first & kForbiddenBit) != 0 || headerBytes > m_rest.size()) {
        return std::nullopt;
    }
    Av1Obu obu;
    obu.type = static_cast<Av1ObuType>(first >> kTypeShift & kTypeMask);
    obu.hasSizeField = (first & kSizeFlag) != 0;
    obu.header = m_rest.first(headerBytes);
    ByteView behind = m_rest.subspan(headerBytes);
    if (obu.hasSizeField) {
        const std::optional<Leb128> size = ReadLeb128(behind);
        if (!size || size->value > behind.size() - size->bytes) {
            return std::nullopt;
        }
        behind = behind.subspan(size->bytes, static_cast<size_t>(size->value));
    }
    obu.payload = behind;
    obu.whole = m_rest.first(static_cast<size_t>(behind.data() - m_rest.data()) + behind.size());
    m_rest = m_rest.subspan(obu.whole.size());
    m_isDamaged = false;
    return obu;
}

void AppendSizedAv1Obu(std::vector<uint8_t>& bytes, const Av1Obu& obu) {
    if (obu.hasSizeField) {
        bytes.insert(bytes.end(), obu.whole.begin(), obu.whole.end());
        return;
    }
    bytes.push_back(static_cast<uint8_t>(obu.header[0] | kSizeFlag));
    bytes.insert(bytes.end(), obu.header.begin() + 1, obu.header.end());
    AppendLeb128(bytes, obu.payload.size());
    bytes.insert(bytes.end(), obu.payload.begin(), obu.payload.end());
}

bool AreAv1Obus(ByteView bytes) {
    Av1ObuReader reader(bytes);
    while (reader.Next()) {
    }
    return !bytes.empty() && !reader.IsDamaged();
}

} // namespace codecs

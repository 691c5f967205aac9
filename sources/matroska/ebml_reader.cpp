#include "sources/matroska/ebml_reader.h"

#include <algorithm>
#include <array>
#include <bit>

#include <ebml/EbmlCrc32.h>
#include <ebml/EbmlVoid.h>

#include "codecs/big_endian.h"

namespace matroska {

namespace {

constexpr size_t kMaxIdBytes = 4;
constexpr size_t kMaxSizeBytes = 8;
constexpr UINT64 kMaxStringBytes = UINT64{64} * 1024;

// The length that the position of the first set bit announces; 9 when there is none.
size_t AnnouncedLength(BYTE first) {
    return static_cast<size_t>(std::countl_zero(first)) + 1;
}

} // namespace

std::optional<Element> EbmlReader::ElementAt(UINT64 position, UINT64 limit) const {
    if (position >= limit) {
        return {};
    }
    std::array<BYTE, kMaxIdBytes + kMaxSizeBytes> buffer{};
    const size_t wanted = static_cast<size_t>(std::min<UINT64>(buffer.size(), limit - position));
    const std::span<const BYTE> head =
        std::span(buffer).first(m_source.ReadAt(position, std::span(buffer).first(wanted)));
    const size_t idLength = head.empty() ? kMaxIdBytes + 1 : AnnouncedLength(head[0]);
    if (idLength > kMaxIdBytes || idLength >= head.size()) {
        return {};
    }
    const size_t sizeLength = AnnouncedLength(head[idLength]);
    if (sizeLength > kMaxSizeBytes || idLength + sizeLength > head.size()) {
        return {};
    }
    const UINT64 allOnes =
        (UINT64{1} << (codecs::kBitsInByte - 1) * sizeLength) - 1; // also the mask without the marker
    const UINT64 size = codecs::ReadBigEndian(head.subspan(idLength, sizeLength)) & allOnes;
    Element element;
    element.id = static_cast<UINT32>(codecs::ReadBigEndian(head.first(idLength)));
    element.start = position;
    element.data = position + idLength + sizeLength;
    element.unknownSize = size == allOnes;
    element.whole = element.unknownSize || size <= limit - element.data;
    element.end = element.unknownSize || !element.whole ? limit : element.data + size;
    return element;
}

UINT64 EbmlReader::ReadUnsigned(const Element& element, UINT64 fallback) const {
    if (element.Size() == 0) {
        return fallback;
    }
    return codecs::ReadBigEndian(ReadBytes(element, sizeof(UINT64)));
}

double EbmlReader::ReadFloat(const Element& element, double fallback) const {
    const std::vector<BYTE> bytes = ReadBytes(element, sizeof(double));
    if (bytes.size() == sizeof(float)) {
        return std::bit_cast<float>(static_cast<UINT32>(codecs::ReadBigEndian(bytes)));
    }
    return bytes.size() == sizeof(double) ? std::bit_cast<double>(codecs::ReadBigEndian(bytes)) : fallback;
}

std::string EbmlReader::ReadString(const Element& element) const {
    const std::vector<BYTE> bytes = ReadBytes(element, kMaxStringBytes);
    return {bytes.begin(), std::find(bytes.begin(), bytes.end(), BYTE{0})};
}

std::vector<BYTE> EbmlReader::ReadBytes(const Element& element, UINT64 most) const {
    if (element.Size() > most) {
        return {};
    }
    std::vector<BYTE> bytes(static_cast<size_t>(element.Size()));
    bytes.resize(m_source.ReadAt(element.data, bytes));
    return bytes;
}

bool MayContain(const libebml::EbmlSemanticContext& parent, UINT32 id) {
    for (size_t i = 0; i < EBML_CTX_SIZE(parent); ++i) {
        if (EBML_ID_VALUE(EBML_CTX_IDX_ID(parent, i)) == id) {
            return true;
        }
    }
    return id == IdOf<libebml::EbmlVoid>() || id == IdOf<libebml::EbmlCrc32>();
}

} // namespace matroska

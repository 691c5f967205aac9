#include "codecs/annexb_converter.h"

#include "codecs/nal_unit.h"

namespace mkv {

namespace {

constexpr unsigned kBitsInByte = 8;

bool LengthFits(size_t length, size_t lengthSize) {
    return lengthSize >= sizeof(length) || length >> (lengthSize * kBitsInByte) == 0;
}

void AppendBigEndian(std::vector<BYTE>& output, size_t value, size_t size) {
    for (size_t byte = size; byte-- > 0;) {
        output.push_back(static_cast<BYTE>(value >> (byte * kBitsInByte)));
    }
}

} // namespace

std::vector<BYTE> ConvertAnnexB(std::span<const BYTE> byteStream, size_t startCodeLength, size_t lengthSize) {
    std::vector<BYTE> output;
    // Lengths replace start codes of at least their size; only a leading unit without start code adds bytes.
    output.reserve(byteStream.size() + lengthSize);
    NALUnitScanner scanner(byteStream, startCodeLength);
    while (const std::optional<NALUnit> unit = scanner.Next()) {
        if (LengthFits(unit->Length(), lengthSize)) {
            AppendBigEndian(output, unit->Length(), lengthSize);
            output.insert(output.end(), unit->Payload().begin(), unit->Payload().end());
        }
    }
    return output;
}

} // namespace mkv

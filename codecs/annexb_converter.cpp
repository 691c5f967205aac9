#include "codecs/annexb_converter.h"

#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

bool LengthFits(size_t length, size_t lengthSize) {
    return lengthSize >= sizeof(length) || length >> (lengthSize * kBitsInByte) == 0;
}

} // namespace

std::vector<uint8_t> ConvertAnnexB(ByteView byteStream, size_t startCodeLength, size_t lengthSize) {
    std::vector<uint8_t> output;
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

} // namespace codecs

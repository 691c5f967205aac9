#include "codecs/annexb_converter.h"

#include <algorithm>

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

std::optional<std::span<uint8_t>> ReplaceStartCodes(std::span<uint8_t> byteStream) {
    static_assert(kSampleLengthSizeBytes == kStartCodeLengthBytes, "a length takes a start code's place");
    NALUnitScanner scanner(byteStream, kStartCodeLengthBytes);
    std::optional<size_t> begin; // of what is left
    size_t end = 0;
    // The scanner looks at nothing in front of the unit that it gave last.
    while (const std::optional<NALUnit> unit = scanner.Next()) {
        const auto place = static_cast<size_t>(unit->Payload().data() - byteStream.data());
        if (place < kStartCodeLengthBytes) {
            return std::nullopt;
        }
        if (!begin) {
            begin = end = place - kStartCodeLengthBytes;
        }
        WriteBigEndian(byteStream.subspan(end, kSampleLengthSizeBytes), unit->Length());
        end += kSampleLengthSizeBytes;
        if (end != place) { // nothing stood between two start codes
            std::copy(unit->Payload().begin(), unit->Payload().end(), byteStream.begin() + static_cast<ptrdiff_t>(end));
        }
        end += unit->Length();
    }
    return byteStream.subspan(begin.value_or(0), end - begin.value_or(0));
}

} // namespace codecs

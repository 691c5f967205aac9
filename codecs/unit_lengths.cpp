#include "codecs/unit_lengths.h"

#include <algorithm>

#include "codecs/big_endian.h"

namespace codecs {

namespace {

// A unit off the sample's front, without its length; none where the length does not fit.
std::optional<ByteView> TakeUnit(ByteView& sample, size_t lengthBytes) {
    if (sample.size() <= lengthBytes) {
        return {};
    }
    const auto length = static_cast<size_t>(ReadBigEndian(sample.first(lengthBytes)));
    if (length > sample.size() - lengthBytes) {
        return {};
    }
    const ByteView unit = sample.subspan(lengthBytes, length);
    sample = sample.subspan(lengthBytes + length);
    return unit;
}

} // namespace

std::optional<std::vector<uint8_t>> WidenLengths(ByteView sample, size_t lengthBytes, size_t most) {
    size_t bytes = 0; // asked for at once: growing would hold it twice over
    for (ByteView rest = sample; const std::optional<ByteView> unit = TakeUnit(rest, lengthBytes);) {
        bytes += kSampleLengthSizeBytes + unit->size();
        if (bytes > most) {
            return {};
        }
    }
    std::vector<uint8_t> wide(bytes);
    auto to = wide.begin();
    while (const std::optional<ByteView> unit = TakeUnit(sample, lengthBytes)) {
        WriteBigEndian(std::span(to, kSampleLengthSizeBytes), unit->size());
        to = std::copy(unit->begin(), unit->end(), to + kSampleLengthSizeBytes);
    }
    return wide;
}

} // namespace codecs

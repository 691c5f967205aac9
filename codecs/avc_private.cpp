#include "codecs/avc_private.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr size_t kHeadBytes = 6; // up to and with the number of sequence parameter sets
constexpr uint8_t kCountMask = 0x1f;
constexpr uint8_t kLengthMask = 0x03;
constexpr size_t kSetLengthBytes = kParameterSetLengthSizeBytes;
constexpr size_t kLengthBytes = kSampleLengthSizeBytes;

// Appends so many sets with their lengths, and takes them off the record's front.
void TakeSets(ByteView& record, size_t count, std::vector<uint8_t>& sets) {
    for (size_t i = 0; i < count && record.size() >= kSetLengthBytes; ++i) {
        const size_t bytes = kSetLengthBytes + static_cast<size_t>(ReadBigEndian(record.first(kSetLengthBytes)));
        if (bytes > record.size()) {
            record = {};
            return;
        }
        sets.insert(sets.end(), record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes));
        record = record.subspan(bytes);
    }
}

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

AvcPrivate ParseAvcPrivate(ByteView record) {
    AvcPrivate avc;
    if (record.size() < kHeadBytes) {
        return avc;
    }
    avc.profile = record[1];
    avc.level = record[3];
    avc.lengthBytes = static_cast<size_t>(record[4] & kLengthMask) + 1;
    const size_t sequenceSets = record[5] & kCountMask;
    record = record.subspan(kHeadBytes);
    TakeSets(record, sequenceSets, avc.parameterSets);
    if (!record.empty()) {
        const size_t pictureSets = record[0];
        record = record.subspan(1);
        TakeSets(record, pictureSets, avc.parameterSets);
    }
    return avc;
}

std::optional<std::vector<uint8_t>> WidenLengths(ByteView sample, size_t lengthBytes, size_t most) {
    size_t bytes = 0; // asked for at once: growing would hold it twice over
    for (ByteView rest = sample; const std::optional<ByteView> unit = TakeUnit(rest, lengthBytes);) {
        bytes += kLengthBytes + unit->size();
        if (bytes > most) {
            return {};
        }
    }
    std::vector<uint8_t> wide(bytes);
    auto to = wide.begin();
    while (const std::optional<ByteView> unit = TakeUnit(sample, lengthBytes)) {
        WriteBigEndian(std::span(to, kLengthBytes), unit->size());
        to = std::copy(unit->begin(), unit->end(), to + kLengthBytes);
    }
    return wide;
}

} // namespace codecs

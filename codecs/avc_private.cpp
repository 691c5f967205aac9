#include "codecs/avc_private.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "codecs/big_endian.h"

namespace matroska {

namespace {

constexpr size_t kHeadBytes = 6; // up to and with the number of sequence parameter sets
constexpr BYTE kCountMask = 0x1f;
constexpr BYTE kLengthMask = 0x03;
constexpr size_t kSetLengthBytes = mkv::kParameterSetLengthSizeBytes;
constexpr size_t kLengthBytes = mkv::kSampleLengthSizeBytes;

// Appends so many sets with their lengths, and takes them off the record's front.
void TakeSets(Bytes& record, size_t count, std::vector<BYTE>& sets) {
    for (size_t i = 0; i < count && record.size() >= kSetLengthBytes; ++i) {
        const size_t bytes = kSetLengthBytes + static_cast<size_t>(BigEndian(record.first(kSetLengthBytes)));
        if (bytes > record.size()) {
            record = {};
            return;
        }
        sets.insert(sets.end(), record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes));
        record = record.subspan(bytes);
    }
}

// A unit off the sample's front, without its length; none where the length does not fit.
std::optional<Bytes> TakeUnit(Bytes& sample, size_t lengthBytes) {
    if (sample.size() <= lengthBytes) {
        return {};
    }
    const auto length = static_cast<size_t>(BigEndian(sample.first(lengthBytes)));
    if (length > sample.size() - lengthBytes) {
        return {};
    }
    const Bytes unit = sample.subspan(lengthBytes, length);
    sample = sample.subspan(lengthBytes + length);
    return unit;
}

} // namespace

AvcPrivate ParseAvcPrivate(Bytes record) {
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

std::optional<std::vector<BYTE>> WidenLengths(Bytes sample, size_t lengthBytes, size_t most) {
    size_t bytes = 0; // asked for at once: growing would hold it twice over
    for (Bytes rest = sample; const std::optional<Bytes> unit = TakeUnit(rest, lengthBytes);) {
        bytes += kLengthBytes + unit->size();
        if (bytes > most) {
            return {};
        }
    }
    std::vector<BYTE> wide(bytes);
    auto to = wide.begin();
    while (const std::optional<Bytes> unit = TakeUnit(sample, lengthBytes)) {
        for (size_t byte = kLengthBytes; byte-- > 0;) {
            *to++ = static_cast<BYTE>(unit->size() >> (8 * byte));
        }
        to = std::copy(unit->begin(), unit->end(), to);
    }
    return wide;
}

} // namespace matroska

#include "codecs/avc_configuration.h"

#include <algorithm>

#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"

namespace codecs {

namespace {

// The oddities below are deliberate: who keeps recordings compares their records byte for byte, and these bytes must
// stay those of the files that exist.
constexpr uint8_t kConfigurationVersion = 1;
// Not taken from the SPS.
constexpr uint8_t kProfileCompatibility = 0;
// Samples carry 4-byte lengths whatever the media type says. The reserved bits around this field and around the
// count of SPS are 0.
constexpr uint8_t kLengthSizeMinusOne = kSampleLengthSizeBytes - 1;
constexpr size_t kHeadBytes = 6;            // up to and with the count of SPS
constexpr size_t kFixedRecordSizeBytes = 7; // and the count of PPS
// The counts are one byte each.
constexpr size_t kMaxParameterSets = 255;

// What of its byte a field fills, in records whose reserved bits are set.
constexpr uint8_t kLengthSizeMask = 0x03;
constexpr uint8_t kSpsCountMask = 0x1f;
constexpr uint8_t kPpsCountMask = 0xff;
constexpr size_t kChromaBytes = 3; // chroma format and bit depths

// NAL units together with the 2-byte length in front of each.
using ParameterSetList = std::vector<ByteView>;

struct ParameterSets {
    ParameterSetList sps;
    ParameterSetList pps;
};

void AppendTo(ParameterSetList& list, ByteView entry) {
    if (list.size() < kMaxParameterSets) {
        list.push_back(entry);
    }
}

std::optional<ParameterSets> FindParameterSets(ByteView units) {
    ParameterSets found;
    while (units.size() >= kParameterSetLengthSizeBytes) {
        const size_t length = static_cast<size_t>(ReadBigEndian(units.first(kParameterSetLengthSizeBytes)));
        if (length == 0) {
            break;
        }
        const size_t entrySize = kParameterSetLengthSizeBytes + length;
        if (entrySize > units.size()) {
            return std::nullopt;
        }
        const uint8_t type = NALUnit(units.subspan(kParameterSetLengthSizeBytes, length)).AvcType();
        if (type == kAvcSpsUnit) {
            AppendTo(found.sps, units.first(entrySize));
        } else if (type == kAvcPpsUnit) {
            AppendTo(found.pps, units.first(entrySize));
        }
        units = units.subspan(entrySize);
    }
    return found;
}

size_t SizeOf(const ParameterSetList& list) {
    size_t size = 0;
    for (const ByteView entry : list) {
        size += entry.size();
    }
    return size;
}

void AppendList(std::vector<uint8_t>& record, const ParameterSetList& list) {
    record.push_back(static_cast<uint8_t>(list.size()));
    for (const ByteView entry : list) {
        record.insert(record.end(), entry.begin(), entry.end());
    }
}

// Appends so many sets with their lengths, and takes them off the record's front. False when they are not all there.
bool TakeSets(ByteView& record, size_t count, std::vector<uint8_t>& sets) {
    for (size_t i = 0; i < count; ++i) {
        if (record.size() < kParameterSetLengthSizeBytes) {
            return false;
        }
        const size_t bytes = kParameterSetLengthSizeBytes +
                             static_cast<size_t>(ReadBigEndian(record.first(kParameterSetLengthSizeBytes)));
        if (bytes > record.size()) {
            record = {};
            return false;
        }
        sets.insert(sets.end(), record.begin(), record.begin() + static_cast<std::ptrdiff_t>(bytes));
        record = record.subspan(bytes);
    }
    return true;
}

bool TakeCountedSets(ByteView& record, uint8_t countMask, std::vector<uint8_t>& sets) {
    if (record.empty()) {
        return false;
    }
    const size_t count = record.front() & countMask;
    record = record.subspan(1);
    return TakeSets(record, count, sets);
}

// What high profiles add, whose end is the record's. Older records lack it, and what stands there may be anything.
bool TakeExtensions(ByteView rest, std::vector<uint8_t>& sets) {
    std::vector<uint8_t> extensions;
    rest = rest.subspan(std::min(rest.size(), kChromaBytes));
    if (!TakeCountedSets(rest, kPpsCountMask, extensions) || !rest.empty()) {
        return false;
    }
    for (ByteView units = extensions; !units.empty();) {
        const auto length = static_cast<size_t>(ReadBigEndian(units.first(kParameterSetLengthSizeBytes)));
        const ByteView entry = units.first(kParameterSetLengthSizeBytes + length);
        if (NALUnit(entry.subspan(kParameterSetLengthSizeBytes)).AvcType() == kAvcSpsExtensionUnit) {
            sets.insert(sets.end(), entry.begin(), entry.end());
        }
        units = units.subspan(entry.size());
    }
    return true;
}

} // namespace

std::optional<std::vector<uint8_t>> BuildAvcConfiguration(ByteView units, uint8_t profile, uint8_t level) {
    const std::optional<ParameterSets> found = FindParameterSets(units);
    if (!found) {
        return std::nullopt;
    }
    std::vector<uint8_t> record;
    record.reserve(kFixedRecordSizeBytes + SizeOf(found->sps) + SizeOf(found->pps));
    record.insert(record.end(), {kConfigurationVersion, profile, kProfileCompatibility, level, kLengthSizeMinusOne});
    AppendList(record, found->sps);
    AppendList(record, found->pps);
    return record;
}

AvcConfiguration ParseAvcConfiguration(ByteView record) {
    AvcConfiguration avc;
    if (record.size() < kHeadBytes) {
        return avc;
    }
    avc.profile = record[1];
    avc.level = record[3];
    avc.lengthBytes = static_cast<size_t>(record[4] & kLengthSizeMask) + 1;
    record = record.subspan(kHeadBytes - 1);
    const bool hasSps = TakeCountedSets(record, kSpsCountMask, avc.parameterSets);
    const bool hasPps = TakeCountedSets(record, kPpsCountMask, avc.parameterSets);
    const bool hasSets = hasSps && hasPps;
    avc.isWhole = hasSets && (record.empty() || TakeExtensions(record, avc.parameterSets));
    return avc;
}

} // namespace codecs

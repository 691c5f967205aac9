#include "codecs/avc_configuration.h"

#include "codecs/annexb_converter.h"
#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint8_t kNalTypeSps = 7;
constexpr uint8_t kNalTypePps = 8;

constexpr uint8_t kConfigurationVersion = 1;
// Deliberately not taken from the SPS.
constexpr uint8_t kProfileCompatibility = 0;
// Samples carry 4-byte lengths whatever the media type says. The reserved bits around this field and around the
// count of SPS are deliberately 0.
constexpr uint8_t kLengthSizeMinusOne = 3;
constexpr size_t kFixedRecordSizeBytes = 7;
// The counts are one byte each.
constexpr size_t kMaxParameterSets = 255;

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
        if (type == kNalTypeSps) {
            AppendTo(found.sps, units.first(entrySize));
        } else if (type == kNalTypePps) {
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

} // namespace codecs

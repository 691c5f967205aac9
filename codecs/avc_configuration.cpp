#include "codecs/avc_configuration.h"

#include "codecs/annexb_converter.h"
#include "codecs/nal_unit.h"

namespace mkv {

namespace {

constexpr BYTE kNalTypeSps = 7;
constexpr BYTE kNalTypePps = 8;

constexpr BYTE kConfigurationVersion = 1;
// Deliberately not taken from the SPS.
constexpr BYTE kProfileCompatibility = 0;
// Samples carry 4-byte lengths whatever the media type says. The reserved bits around this field and around the
// count of SPS are deliberately 0.
constexpr BYTE kLengthSizeMinusOne = 3;
constexpr size_t kFixedRecordSizeBytes = 7;
// The counts are one byte each.
constexpr size_t kMaxParameterSets = 255;

// NAL units together with the 2-byte length in front of each.
using ParameterSetList = std::vector<std::span<const BYTE>>;

struct ParameterSets {
    ParameterSetList sps;
    ParameterSetList pps;
};

void AppendTo(ParameterSetList& list, std::span<const BYTE> entry) {
    if (list.size() < kMaxParameterSets) {
        list.push_back(entry);
    }
}

std::optional<ParameterSets> FindParameterSets(std::span<const BYTE> units) {
    ParameterSets found;
    while (units.size() >= kParameterSetLengthSizeBytes) {
        const size_t length = static_cast<size_t>(units[0]) << 8 | units[1];
        if (length == 0) {
            break;
        }
        const size_t entrySize = kParameterSetLengthSizeBytes + length;
        if (entrySize > units.size()) {
            return std::nullopt;
        }
        const BYTE type = NALUnit(units.subspan(kParameterSetLengthSizeBytes, length)).AvcType();
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
    for (const std::span<const BYTE> entry : list) {
        size += entry.size();
    }
    return size;
}

void AppendList(std::vector<BYTE>& record, const ParameterSetList& list) {
    record.push_back(static_cast<BYTE>(list.size()));
    for (const std::span<const BYTE> entry : list) {
        record.insert(record.end(), entry.begin(), entry.end());
    }
}

} // namespace

std::optional<std::vector<BYTE>> BuildAvcConfiguration(std::span<const BYTE> units, BYTE profile, BYTE level) {
    const std::optional<ParameterSets> found = FindParameterSets(units);
    if (!found) {
        return std::nullopt;
    }
    std::vector<BYTE> record;
    record.reserve(kFixedRecordSizeBytes + SizeOf(found->sps) + SizeOf(found->pps));
    record.insert(record.end(), {kConfigurationVersion, profile, kProfileCompatibility, level, kLengthSizeMinusOne});
    AppendList(record, found->sps);
    AppendList(record, found->pps);
    return record;
}

} // namespace mkv

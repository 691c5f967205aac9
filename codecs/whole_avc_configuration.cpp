#include "codecs/whole_avc_configuration.h"

#include "codecs/avc_configuration.h"
#include "codecs/avc_parameter_sets.h"
#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"

namespace codecs {

namespace {

constexpr uint8_t kWholeAvcVersion = 1;
constexpr size_t kMaxSps = 31; // the field has five bits
constexpr size_t kMaxSets = 255;
constexpr uint8_t kReservedSixBits = 0xfc;
constexpr uint8_t kReservedFiveBits = 0xf8;
constexpr uint8_t kReservedThreeBits = 0xe0;

constexpr uint8_t kBaselineProfile = 66;
constexpr uint8_t kMainProfile = 77;
constexpr uint8_t kExtendedProfile = 88;

using Record = std::vector<uint8_t>;
using Units = std::vector<ByteView>;

struct WholeSets {
    Units sps;
    Units pps;
    Units spsExtensions;
};

WholeSets SortOutSets(const Units& units) {
    WholeSets sets;
    for (const ByteView unit : units) {
        switch (NALUnit(unit).AvcType()) {
        case kAvcSpsUnit:
            AddUnit(sets.sps, unit, kMaxSps);
            break;
        case kAvcPpsUnit:
            AddUnit(sets.pps, unit, kMaxSets);
            break;
        case kAvcSpsExtensionUnit:
            AddUnit(sets.spsExtensions, unit, kMaxSets);
            break;
        default:
            break;
        }
    }
    return sets;
}

std::optional<AvcSpsHead> HeadOf(const WholeSets& sets, const SequenceFacts& facts) {
    if (!sets.sps.empty()) {
        return ParseAvcSpsHead(sets.sps.front());
    }
    AvcSpsHead head;
    head.profile = facts.profile;
    head.level = facts.level;
    return head;
}

void AppendSets(Record& record, uint8_t reservedBits, const Units& units) {
    record.push_back(static_cast<uint8_t>(reservedBits | units.size()));
    for (const ByteView unit : units) {
        AppendBigEndian(record, unit.size(), kParameterSetLengthSizeBytes);
        record.insert(record.end(), unit.begin(), unit.end());
    }
}

// Later editions ask for what follows in all but these three profiles.
bool HasChroma(const AvcSpsHead& head) {
    return head.profile != kBaselineProfile && head.profile != kMainProfile && head.profile != kExtendedProfile;
}

void AppendChroma(Record& record, const AvcSpsHead& head, const Units& spsExtensions) {
    record.push_back(static_cast<uint8_t>(kReservedSixBits | head.chromaFormatIdc));
    record.push_back(static_cast<uint8_t>(kReservedFiveBits | head.bitDepthLumaMinus8));
    record.push_back(static_cast<uint8_t>(kReservedFiveBits | head.bitDepthChromaMinus8));
    AppendSets(record, 0, spsExtensions);
}

std::optional<Record> BuildAvc(const Units& units, const SequenceFacts& facts) {
    const WholeSets sets = SortOutSets(units);
    const std::optional<AvcSpsHead> head = HeadOf(sets, facts);
    if (!head) {
        return std::nullopt;
    }
    Record record{kWholeAvcVersion, head->profile, head->compatibility, head->level,
                  static_cast<uint8_t>(kReservedSixBits | LengthSizeMinusOne(facts))};
    AppendSets(record, kReservedThreeBits, sets.sps);
    AppendSets(record, 0, sets.pps);
    if (HasChroma(*head)) {
        AppendChroma(record, *head, sets.spsExtensions);
    }
    return record;
}

// The sets of a record whose every byte is told by its counts and lengths, one sequence parameter set at least.
std::optional<AvcConfiguration> TakeRecord(ByteView header) {
    if (header.empty() || header.front() != kWholeAvcVersion) {
        return std::nullopt;
    }
    AvcConfiguration parsed = ParseAvcConfiguration(header);
    const bool beginsWithSps =
        parsed.parameterSets.size() > kParameterSetLengthSizeBytes &&
        NALUnit(ByteView(parsed.parameterSets).subspan(kParameterSetLengthSizeBytes)).AvcType() == kAvcSpsUnit;
    return parsed.isWhole && beginsWithSps ? std::optional(std::move(parsed)) : std::nullopt;
}

} // namespace

std::optional<Record> BuildWholeAvcConfiguration(ByteView header, const SequenceFacts& facts) {
    if (const std::optional<AvcConfiguration> inside = TakeRecord(header)) {
        const std::optional<Units> units = FindHeaderUnits(inside->parameterSets);
        return units ? BuildAvc(*units, {inside->profile, inside->level, inside->lengthBytes}) : std::nullopt;
    }
    const std::optional<Units> units = FindHeaderUnits(header);
    return units ? BuildAvc(*units, facts) : std::nullopt;
}

} // namespace codecs

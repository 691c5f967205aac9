// Sequence headers of H.264 and H.265 as decoder configuration records, taken apart again; and each of their units as
// every parameter set and slice that there is.
#include <algorithm>

#include "codecs/annexb_converter.h"
#include "codecs/avc_configuration.h"
#include "codecs/avc_picture_order.h"
#include "codecs/avc_sei.h"
#include "codecs/hevc_configuration.h"
#include "codecs/hevc_picture_order.h"
#include "codecs/hevc_record.h"
#include "codecs/nal_unit.h"
#include "codecs/stream_colour.h"
#include "codecs/whole_avc_configuration.h"
#include "codecs/whole_hevc_configuration.h"
#include "fuzz/plain_units.h"
#include "fuzz/require.h"

namespace {

using fuzz::Require;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t kProfile = 100;
constexpr std::uint8_t kLevel = 31;

// Takes bytes off the front of a record, which must have them.
class Record {
  public:
    explicit Record(const Bytes& bytes) : m_rest(bytes) {}
    codecs::ByteView Take(size_t bytes) {
        Require(bytes <= m_rest.size());
        const codecs::ByteView taken = m_rest.first(bytes);
        m_rest = m_rest.subspan(bytes);
        return taken;
    }
    size_t Number(size_t bytes) {
        size_t value = 0;
        for (const std::uint8_t byte : Take(bytes)) {
            value = value << 8 | byte;
        }
        return value;
    }
    [[nodiscard]] bool IsEmpty() const { return m_rest.empty(); }

  private:
    codecs::ByteView m_rest;
};

// ---- H.264 -------------------------------------------------------------------------------------------------------

void TakeSets(Record& record, std::uint8_t type, Bytes& sets) {
    for (size_t count = record.Number(1); count > 0; --count) {
        const size_t length = record.Number(2);
        const codecs::ByteView unit = record.Take(length);
        Require(!unit.empty() && (unit[0] & 0x1f) == type);
        sets.push_back(static_cast<std::uint8_t>(length >> 8));
        sets.push_back(static_cast<std::uint8_t>(length));
        sets.insert(sets.end(), unit.begin(), unit.end());
    }
}

void CheckAvcRecord(const Bytes& bytes) {
    Record record(bytes);
    const codecs::ByteView head = record.Take(5);
    Require(head[0] == 1 && head[1] == kProfile && head[2] == 0 && head[3] == kLevel && head[4] == 3);
    const bool allCounted = bytes[5] <= 31; // more sets than the field counts are none for whoever reads it
    Bytes sets;
    TakeSets(record, codecs::kAvcSpsUnit, sets);
    TakeSets(record, codecs::kAvcPpsUnit, sets);
    Require(record.IsEmpty());
    const codecs::AvcConfiguration parsed = codecs::ParseAvcConfiguration(bytes);
    Require(parsed.profile == kProfile && parsed.level == kLevel && parsed.lengthBytes == 4);
    Require(!allCounted || parsed.parameterSets == sets);
}

void CheckAvc(codecs::ByteView header) {
    if (const auto record = codecs::BuildAvcConfiguration(header, kProfile, kLevel)) {
        CheckAvcRecord(*record);
    }
    const Bytes units = codecs::ConvertAnnexB(header, codecs::kStartCodeLengthBytes, 2);
    const auto record = codecs::BuildAvcConfiguration(units, kProfile, kLevel);
    Require(record.has_value()); // lengths of our own never contradict the bytes
    CheckAvcRecord(*record);
    const codecs::AvcConfiguration any = codecs::ParseAvcConfiguration(header);
    Require(any.parameterSets.size() <= header.size() && any.lengthBytes >= 1 && any.lengthBytes <= 4);
}

void CheckWholeAvc(codecs::ByteView header) {
    const auto whole = codecs::BuildWholeAvcConfiguration(header, {kProfile, kLevel, 4});
    if (!whole) {
        return;
    }
    const codecs::AvcConfiguration parsed = codecs::ParseAvcConfiguration(*whole);
    Require(parsed.isWhole && ((*whole)[4] & 0xfc) == 0xfc && ((*whole)[5] & 0xe0) == 0xe0);
    // What is whole stays as it is; without a set there is nothing to know it by.
    const bool hasSps = ((*whole)[5] & 0x1f) != 0;
    Require(!hasSps || codecs::BuildWholeAvcConfiguration(*whole, {}) == whole);
}

// ---- H.265 -------------------------------------------------------------------------------------------------------

void CheckHevc(codecs::ByteView header) {
    constexpr size_t kMost = 255;
    constexpr size_t kLongest = 65535;
    auto units = fuzz::PlainUnits(header, codecs::kStartCodeLengthBytes);
    std::erase_if(units, [](const Bytes& unit) { return unit.size() > kLongest; });
    units.resize(std::min(units.size(), kMost));
    const Bytes bytes = codecs::BuildHevcConfiguration(header);
    Record record(bytes);
    const codecs::ByteView head = record.Take(22);
    Require(head[0] == 0 && (head[13] & 0xf0) == 0xf0 && head[15] == 0xfc && (head[21] & 3) == 3);
    Require((head[16] & 0xfc) == 0xfc && (head[17] & 0xf8) == 0xf8 && (head[18] & 0xf8) == 0xf8);
    Require(record.Number(1) == units.size());
    for (const Bytes& unit : units) {
        Require(record.Number(1) == (0x80U | (unit[0] >> 1 & 0x3fU)) && record.Number(2) == 1);
        const codecs::ByteView stored = record.Take(record.Number(2));
        Require(std::equal(unit.begin(), unit.end(), stored.begin(), stored.end()));
    }
    Require(record.IsEmpty());
}

void CheckWholeHevc(codecs::ByteView header) {
    if (const auto whole = codecs::BuildWholeHevcConfiguration(header, {1, kLevel, 4})) {
        const auto parsed = codecs::ParseHevcRecord(*whole);
        Require(parsed && parsed->isSound);
        Require(codecs::BuildWholeHevcConfiguration(*whole, {}) == whole);
    }
}

// ---- Colours -----------------------------------------------------------------------------------------------------

void RequireSane(const codecs::StreamColour& colour) {
    Require(colour.signal.chromaLocation.value_or(0) <= 5 && (!colour.hasParameters || colour.bitDepth >= 8));
    Require(colour.light.maxContentLight != std::uint16_t{0} && colour.light.maxFrameAverageLight != std::uint16_t{0});
    if (const auto& mastering = colour.light.mastering) {
        Require(mastering->gamut || mastering->luminance);
        Require(!mastering->luminance || mastering->luminance->maximum > mastering->luminance->minimum);
        Require(!mastering->gamut || (mastering->gamut->red.x <= 1 && mastering->gamut->white.y <= 1));
    }
}

void CheckColours(codecs::ByteView header, const std::vector<Bytes>& plainUnits) {
    const std::vector<codecs::ByteView> units(plainUnits.begin(), plainUnits.end());
    RequireSane(codecs::AvcColourOf(units));
    RequireSane(codecs::HevcColourOf(units));
    for (const size_t lengthBytes : {1, 2, 3, 4}) {
        const auto found = codecs::FirstUnitsOf(header, lengthBytes);
        size_t taken = 0;
        for (const codecs::ByteView unit : found) {
            taken += lengthBytes + unit.size();
        }
        Require(taken <= header.size());
        RequireSane(codecs::AvcColourOf(found));
        RequireSane(codecs::HevcColourOf(found));
    }
}

// ---- Units -------------------------------------------------------------------------------------------------------

Bytes PlainRawPayload(const Bytes& unit, size_t headerBytes) {
    Bytes raw;
    size_t zeros = 0;
    for (size_t i = headerBytes; i < unit.size(); ++i) {
        if (zeros >= 2 && unit[i] == 3) {
            zeros = 0;
            continue;
        }
        zeros = unit[i] == 0 ? zeros + 1 : 0;
        raw.push_back(unit[i]);
    }
    return raw;
}

struct AvcState {
    codecs::AvcSps sps;
    codecs::AvcPps pps;
    codecs::AvcPictureOrder order;
};

void ReadAvcUnit(codecs::ByteView unit, AvcState& state) {
    (void)codecs::IsExactRecoveryPoint(unit);
    if (const auto sps = codecs::ParseAvcSps(unit)) {
        Require(sps->frameNumBits <= 16 && sps->pocLsbBits <= 16);
        state.sps = *sps;
    }
    if (const auto pps = codecs::ParseAvcPps(unit)) {
        Require(pps->id <= codecs::kAvcMaxPpsId);
        state.pps = *pps;
    }
    if (const auto slice = codecs::ParseAvcSlice(unit, state.sps, state.pps)) {
        (void)state.order.Next(*slice, state.sps);
    }
}

struct HevcState {
    codecs::HevcSpsHead sps;
    codecs::HevcPpsHead pps;
    codecs::HevcPictureOrder order;
};

void ReadHevcUnit(codecs::ByteView unit, HevcState& state) {
    Require(codecs::ParseHevcSps(unit).maxSubLayersMinus1 < codecs::kHevcMaxSubLayers);
    if (const auto sps = codecs::ParseHevcSpsHead(unit)) {
        state.sps = *sps;
    }
    if (const auto pps = codecs::ParseHevcPpsHead(unit)) {
        Require(pps->id <= codecs::kHevcMaxPpsId);
        state.pps = *pps;
    }
    if (const auto slice = codecs::ParseHevcSlice(unit, state.sps, state.pps)) {
        (void)state.order.Next(*slice);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const Bytes header = fuzz::ExactCopy({data, size});
    CheckAvc(header);
    CheckWholeAvc(header);
    CheckHevc(header);
    CheckWholeHevc(header);
    AvcState avc;
    HevcState hevc;
    const auto units = fuzz::PlainUnits(header, codecs::kStartCodeLengthBytes);
    CheckColours(header, units);
    for (const Bytes& unit : units) {
        const Bytes exact = fuzz::ExactCopy(unit);
        Require(codecs::RawPayload(exact, 1) == PlainRawPayload(exact, 1));
        ReadAvcUnit(exact, avc);
        ReadHevcUnit(exact, hevc);
    }
    return 0;
}

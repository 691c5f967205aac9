#include "codecs/av1_units.h"

#include <algorithm>

#include "codecs/av1_obu.h"
#include "codecs/av1_sequence_header.h"
#include "codecs/bitstream_reader.h"

namespace codecs {

namespace {

constexpr uint32_t kKeyFrame = 0;

bool StaysInContainer(const Av1Obu& obu) {
    switch (obu.type) {
    case Av1ObuType::TemporalDelimiter:
    case Av1ObuType::RedundantFrameHeader:
    case Av1ObuType::TileList:
    case Av1ObuType::Padding:
        return false;
    default:
        return true;
    }
}

bool AllHaveSizes(ByteView units) {
    Av1ObuReader reader(units);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (!obu->hasSizeField) {
            return false;
        }
    }
    return true;
}

// Reads a frame header as far as it tells whether decoding can begin there.
std::optional<bool> IsShownKeyFrame(const Av1Obu& obu, bool isReduced) {
    if (isReduced) {
        return true;
    }
    BitstreamReader bits(obu.payload);
    const bool showsExisting = bits.ReadFlag();
    const bool isKey = bits.ReadBits(2) == kKeyFrame;
    const bool isShown = bits.ReadFlag();
    return bits.IsValid() ? std::optional(!showsExisting && isKey && isShown) : std::nullopt;
}

} // namespace

std::vector<uint8_t> CleanAv1Units(ByteView units) {
    std::vector<uint8_t> clean;
    clean.reserve(units.size() + sizeof(uint64_t));
    Av1ObuReader reader(units);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (StaysInContainer(*obu)) {
            AppendSizedAv1Obu(clean, *obu);
        }
    }
    if (reader.IsDamaged()) {
        clean.assign(units.begin(), units.end());
    }
    return clean;
}

// What stays only moves to the front; a unit is read before anything is written over it.
std::optional<std::span<uint8_t>> CleanAv1UnitsInPlace(std::span<uint8_t> units) {
    if (!AreAv1Obus(units)) {
        return units;
    }
    if (!AllHaveSizes(units)) {
        return std::nullopt;
    }
    size_t kept = 0;
    Av1ObuReader reader(units);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (!StaysInContainer(*obu)) {
            continue;
        }
        if (obu->whole.data() != units.data() + kept) {
            std::copy(obu->whole.begin(), obu->whole.end(), units.begin() + static_cast<std::ptrdiff_t>(kept));
        }
        kept += obu->whole.size();
    }
    return units.first(kept);
}

std::optional<Av1RandomAccess> RandomAccessOfAv1(ByteView units) {
    std::optional<Av1SequenceHeader> sequence;
    Av1ObuReader reader(units);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (obu->type == Av1ObuType::SequenceHeader) {
            sequence = ParseAv1SequenceHeader(obu->payload);
        } else if (obu->type == Av1ObuType::Frame || obu->type == Av1ObuType::FrameHeader) {
            const std::optional<bool> isKey = IsShownKeyFrame(*obu, sequence && sequence->isReduced);
            if (!isKey) {
                return std::nullopt;
            }
            return !*isKey ? Av1RandomAccess::No : !sequence ? Av1RandomAccess::WithoutHeader : Av1RandomAccess::Yes;
        }
    }
    return std::nullopt;
}

} // namespace codecs

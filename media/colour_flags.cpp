#include "media/colour_flags.h"

#include <algorithm>
#include <span>

namespace media {

namespace {

struct Value {
    DWORD flag;
    UINT64 told;
};
// Of several that the flag stands for, the first one is what it becomes.
constexpr Value kMatrices[] = {{1, 1}, {2, 6}, {2, 5}, {3, 7}, {4, 9}, {5, 10}, {6, 0}};
constexpr Value kTransfers[] = {{1, 8},   {4, 4},   {5, 1},   {5, 6},   {6, 7},   {7, 13},  {8, 5},   {9, 9},
                                {10, 10}, {11, 11}, {13, 14}, {13, 15}, {12, 14}, {12, 15}, {15, 16}, {16, 18}};
constexpr Value kPrimaries[] = {{2, 1}, {3, 4}, {4, 5},   {5, 6},   {6, 7},  {7, 22},
                                {8, 6}, {9, 9}, {10, 10}, {11, 11}, {13, 12}};
constexpr Value kRanges[] = {{1, kFullRange}, {2, kBroadcastRange}};

struct Field {
    Colour::Number number;
    unsigned shift;
    DWORD mask;
    std::span<const Value> values;

    [[nodiscard]] DWORD In(DWORD flags) const { return flags >> shift & mask; }
};
constexpr Field kFields[] = {
    {Colour::kRange, 12, 0x7, kRanges},
    {Colour::kMatrix, 15, 0x7, kMatrices},
    {Colour::kPrimaries, 22, 0x1f, kPrimaries},
    {Colour::kTransfer, 27, 0x1f, kTransfers},
};

constexpr DWORD kColourIsThere = AMCONTROL_USED | AMCONTROL_COLORINFO_PRESENT;
constexpr unsigned kChromaShift = 8;
constexpr DWORD kChromaMask = 0xf;
constexpr DWORD kChromaHorizontallyCosited = 0x4;
constexpr DWORD kChromaVerticallyCosited = 0x2;
constexpr DWORD kChromaPlanesAligned = 0x1;

UINT64 SitingOf(DWORD chroma, DWORD cosited) {
    return (chroma & cosited) != 0 ? kCosited : kBetween;
}

DWORD ChromaOf(const Colour& colour) {
    const auto& horizontally = colour.numbers[Colour::kChromaSitingHorz];
    const auto& vertically = colour.numbers[Colour::kChromaSitingVert];
    if (!horizontally || !vertically) {
        return 0;
    }
    return kChromaPlanesAligned | (*horizontally == kCosited ? kChromaHorizontallyCosited : 0) |
           (*vertically == kCosited ? kChromaVerticallyCosited : 0);
}

// 0 for what has none.
DWORD FlagOf(const Field& field, const std::optional<UINT64>& told) {
    const auto found =
        std::ranges::find(field.values, told, [](const Value& value) { return std::optional(value.told); });
    return told && found != field.values.end() ? found->flag : 0;
}

bool StandsFor(const Field& field, UINT64 one, UINT64 other) {
    return std::ranges::any_of(field.values, [&](const Value& value) {
        return value.told == one && std::ranges::any_of(field.values, [&](const Value& second) {
                   return second.flag == value.flag && second.told == other;
               });
    });
}

} // namespace

Colour ColourOfFlags(DWORD controlFlags) {
    Colour colour;
    if ((controlFlags & kColourIsThere) != kColourIsThere) {
        return colour;
    }
    for (const Field& field : kFields) {
        const auto found = std::ranges::find(field.values, field.In(controlFlags), &Value::flag);
        if (found != field.values.end()) {
            colour.numbers[field.number] = found->told;
        }
    }
    if (const DWORD chroma = controlFlags >> kChromaShift & kChromaMask; chroma != 0) {
        colour.numbers[Colour::kChromaSitingHorz] = SitingOf(chroma, kChromaHorizontallyCosited);
        colour.numbers[Colour::kChromaSitingVert] = SitingOf(chroma, kChromaVerticallyCosited);
    }
    return colour;
}

DWORD FlagsOfColour(const Colour& colour) {
    DWORD flags = ChromaOf(colour) << kChromaShift;
    for (const Field& field : kFields) {
        flags |= FlagOf(field, colour.numbers[field.number]) << field.shift;
    }
    return flags == 0 ? 0 : flags | kColourIsThere;
}

void TakeExact(const Colour& other, Colour& ofFlags) {
    for (const Field& field : kFields) {
        std::optional<UINT64>& told = ofFlags.numbers[field.number];
        const std::optional<UINT64>& exact = other.numbers[field.number];
        if (told && exact && StandsFor(field, *told, *exact)) {
            told = exact;
        }
    }
}

} // namespace media

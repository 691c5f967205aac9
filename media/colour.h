// Colour: what a track tells of its pictures' colours (RFC 9559, 5.1.4.1.28.16), in Matroska's values; those that name
// a standard are the values of ISO/IEC 23091-2. What is not told is not there.
//
// Units: CIE 1931 coordinates, candelas per square metre.
#pragma once

#include <algorithm>
#include <array>
#include <optional>

#include "win/platform.h"

namespace media {

struct Colour {
    // In the order of Matroska's elements, as is the other list.
    enum Number : size_t {
        kMatrix,
        kBitsPerChannel,
        kChromaSubsamplingHorz,
        kChromaSubsamplingVert,
        kCbSubsamplingHorz,
        kCbSubsamplingVert,
        kChromaSitingHorz,
        kChromaSitingVert,
        kRange,
        kTransfer,
        kPrimaries,
        kMaxContentLight,
        kMaxFrameLight,
        kNumbers
    };
    // Of the display that the pictures were made on.
    enum Mastering : size_t {
        kRedX,
        kRedY,
        kGreenX,
        kGreenY,
        kBlueX,
        kBlueY,
        kWhiteX,
        kWhiteY,
        kMaxLuminance,
        kMinLuminance,
        kMasterings
    };

    std::array<std::optional<UINT64>, kNumbers> numbers{};
    std::array<std::optional<double>, kMasterings> mastering{};

    [[nodiscard]] bool IsEmpty() const { return *this == Colour(); }
    [[nodiscard]] bool TellsMastering() const {
        return std::ranges::any_of(mastering, [](const auto& value) { return value.has_value(); });
    }
    // What the other one tells and this one does not.
    void TakeMissing(const Colour& other);

    bool operator==(const Colour&) const = default;
};

// KaxVideoColourRange.
inline constexpr UINT64 kBroadcastRange = 1;
inline constexpr UINT64 kFullRange = 2;
// Where chroma samples lie, horizontally and vertically.
inline constexpr UINT64 kCosited = 1;
inline constexpr UINT64 kBetween = 2;

// Whether Matroska has a meaning for the value, and one that says something.
[[nodiscard]] bool IsToldNumber(Colour::Number number, UINT64 value);
[[nodiscard]] bool IsToldMastering(Colour::Mastering mastering, double value);

} // namespace media

#include "media/colour.h"

#include <cmath>

namespace media {

namespace {

constexpr UINT64 kUnspecified = 2;
constexpr UINT64 kReserved = 3;
constexpr UINT64 kMaxMatrix = 14;
constexpr UINT64 kMaxTransfer = 18;
constexpr UINT64 kMaxPrimaries = 12;
constexpr UINT64 kEbu3213Primaries = 22;
constexpr UINT64 kMaxRange = 3; // told by matrix and transfer
constexpr UINT64 kMaxSubsampling = 15;
constexpr UINT64 kMaxBits = 64;

template <typename List>
void TakeMissingOf(const List& others, List& list) {
    for (size_t i = 0; i < list.size(); ++i) {
        list[i] = list[i] ? list[i] : others[i];
    }
}

bool IsWithin(UINT64 value, UINT64 least, UINT64 most) {
    return value >= least && value <= most;
}

bool IsStandard(UINT64 value, UINT64 most) {
    return value != 0 && value != kUnspecified && value != kReserved && value <= most;
}

} // namespace

void Colour::TakeMissing(const Colour& other) {
    TakeMissingOf(other.numbers, numbers);
    TakeMissingOf(other.mastering, mastering);
}

bool IsToldNumber(Colour::Number number, UINT64 value) {
    switch (number) {
    case Colour::kMatrix:
        return value == 0 || IsStandard(value, kMaxMatrix); // 0: red, green and blue themselves
    case Colour::kTransfer:
        return IsStandard(value, kMaxTransfer);
    case Colour::kPrimaries:
        return IsStandard(value, kMaxPrimaries) || value == kEbu3213Primaries;
    case Colour::kRange:
        return IsWithin(value, kBroadcastRange, kMaxRange);
    case Colour::kChromaSitingHorz:
    case Colour::kChromaSitingVert:
        return IsWithin(value, kCosited, kBetween);
    case Colour::kBitsPerChannel:
        return IsWithin(value, 1, kMaxBits);
    case Colour::kMaxContentLight:
    case Colour::kMaxFrameLight:
        return IsWithin(value, 1, INT32_MAX);
    default:
        return value <= kMaxSubsampling; // 0: as many samples as of luma
    }
}

bool IsToldMastering(Colour::Mastering mastering, double value) {
    const bool isLuminance = mastering == Colour::kMaxLuminance || mastering == Colour::kMinLuminance;
    return std::isfinite(value) && value >= 0 && (isLuminance || value <= 1);
}

} // namespace media

#include "sources/annexb/frame_rate.h"

#include <charconv>
#include <cmath>

#include "dshow/ref_time.h"

namespace annexb {

namespace {

constexpr UINT64 kSecond{kReferenceTimesPerSecond};
constexpr double kLeastRate = 0.001;
constexpr double kGreatestRate = 10'000;
constexpr double kNtscFactor = 1.001;
constexpr UINT32 kNtscPictures = 1000;
constexpr UINT32 kNtscSeconds = 1001;
constexpr double kNtscTolerance = 0.005; // 23.976, 23.98, 29.97 and 59.94 are meant
constexpr UINT32 kDecimals = 100'000;

std::optional<double> ParseNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::optional<UINT32> ParseWhole(std::string_view text) {
    UINT32 value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() && value > 0 ? std::optional(value) : std::nullopt;
}

bool IsSane(double rate) {
    return rate >= kLeastRate && rate <= kGreatestRate;
}

FrameRate FromDecimal(double rate) {
    const double nearest = std::round(rate);
    if (rate == nearest) {
        return {static_cast<UINT32>(nearest), 1};
    }
    const double ntsc = std::round(rate * kNtscFactor);
    if (ntsc >= 1 && std::abs(ntsc / kNtscFactor - rate) < kNtscTolerance) {
        return {static_cast<UINT32>(ntsc) * kNtscPictures, kNtscSeconds};
    }
    return {static_cast<UINT32>(std::lround(rate * kDecimals)), kDecimals};
}

} // namespace

// Whole seconds first, so that long streams stay within 64 bits.
REFERENCE_TIME FrameRate::TimeOf(UINT64 picture) const {
    const UINT64 ticks = picture * seconds;
    return static_cast<REFERENCE_TIME>(ticks / pictures * kSecond + ticks % pictures * kSecond / pictures);
}

std::optional<FrameRate> ParseFrameRate(std::string_view text) {
    if (const size_t slash = text.find('/'); slash != std::string_view::npos) {
        const std::optional<UINT32> pictures = ParseWhole(text.substr(0, slash));
        const std::optional<UINT32> seconds = ParseWhole(text.substr(slash + 1));
        const bool isRate = pictures && seconds && IsSane(static_cast<double>(*pictures) / *seconds);
        return isRate ? std::optional(FrameRate{*pictures, *seconds}) : std::nullopt;
    }
    const std::optional<double> rate = ParseNumber(text);
    return rate && IsSane(*rate) ? std::optional(FromDecimal(*rate)) : std::nullopt;
}

} // namespace annexb

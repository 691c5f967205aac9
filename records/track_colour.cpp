#include "records/track_colour.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace records {

namespace {

constexpr INT32 kUntold = -1;

bool IsNumber(INT32 value) {
    return value >= kUntold;
}

bool IsMeasure(double value) {
    return std::isfinite(value) && (value >= 0 || value == double{kUntold});
}

} // namespace

MuxTrackColour UntoldColour(INT32 index) {
    MuxTrackColour colour{};
    colour.index = index;
    for (INT32 MuxTrackColour::*const number : kColourNumbers) {
        colour.*number = kUntold;
    }
    for (double MuxTrackColour::*const measure : kColourMastering) {
        colour.*measure = kUntold;
    }
    return colour;
}

bool IsTrackColour(const MuxTrackColour& colour) {
    return std::ranges::all_of(kColourNumbers, [&](auto number) { return IsNumber(colour.*number); }) &&
           std::ranges::all_of(kColourMastering, [&](auto measure) { return IsMeasure(colour.*measure); });
}

bool HasDolbyVision(const MuxTrackColour& colour) {
    return std::any_of(std::begin(colour.dolbyVision), std::end(colour.dolbyVision),
                       [](BYTE byte) { return byte != 0; });
}

} // namespace records

// LightMetadata: what a stream of high dynamic range tells of the display that it was made on and of how bright it gets
// (SMPTE ST 2086 and CTA-861.3), as messages of H.264 and H.265 carry it (ITU-T H.265, D.2.28, D.2.35 and D.2.38).
//
// Units: CIE 1931 coordinates, candelas per square metre.
#pragma once

#include <array>
#include <optional>

#include "codecs/byte_view.h"

namespace codecs {

struct MasteringDisplay {
    struct Point {
        double x = 0;
        double y = 0;
        bool operator==(const Point&) const = default;
    };
    struct Gamut {
        Point red, green, blue, white;
        bool operator==(const Gamut&) const = default;
    };
    struct Luminance {
        double maximum = 0;
        double minimum = 0;
        bool operator==(const Luminance&) const = default;
    };
    // None where nothing is told, or what cannot be.
    std::optional<Gamut> gamut{};
    std::optional<Luminance> luminance{};

    bool operator==(const MasteringDisplay&) const = default;
};

struct LightMetadata {
    std::optional<MasteringDisplay> mastering{};
    std::optional<uint16_t> maxContentLight{}; // never 0, which says nothing
    std::optional<uint16_t> maxFrameAverageLight{};
    std::optional<uint8_t> preferredTransfer{}; // in place of the VUI's

    bool operator==(const LightMetadata&) const = default;
};

// Of all messages in the raw payload of a unit; the first one of a kind counts, and what is known already stays.
void ReadLightMessages(ByteView payload, LightMetadata& light);

} // namespace codecs

#include "codecs/av1_colour.h"

#include "codecs/av1_configuration.h"
#include "codecs/av1_obu.h"
#include "codecs/av1_sequence_header.h"
#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr uint64_t kContentLightMetadata = 1;
constexpr uint64_t kMasteringDisplayMetadata = 2;
constexpr size_t kLightLevelBytes = 4;
constexpr size_t kMasteringDisplayBytes = 24; // red, green, blue, white; the luminances

// Fixed point: 0.16, 24.8, 18.14.
constexpr double kAv1ChromaticityUnits = 65536;
constexpr double kAv1MaxLuminanceUnits = 256;
constexpr double kAv1MinLuminanceUnits = 16384;

// In Av1Color's words; VideoSignal's are those of the other codecs.
constexpr uint8_t kAv1Vertical = 1;
constexpr uint8_t kAv1Colocated = 2;
constexpr uint8_t kLocationLeft = 0;
constexpr uint8_t kLocationTopLeft = 2;

VideoSignal SignalOf(const Av1Color& color) {
    VideoSignal signal;
    signal.primaries = color.primaries;
    signal.transfer = color.transferCharacteristics;
    signal.matrix = color.matrixCoefficients;
    signal.isFullRange = color.isFullRange;
    const bool is420 = color.subsamplingX && color.subsamplingY && !color.isMonochrome;
    if (is420 && color.chromaSamplePosition == kAv1Vertical) {
        signal.chromaLocation = kLocationLeft;
    } else if (is420 && color.chromaSamplePosition == kAv1Colocated) {
        signal.chromaLocation = kLocationTopLeft;
    }
    return signal;
}

MasteringDisplay::Point Av1PointAt(ByteView payload, size_t point) {
    return {static_cast<double>(ReadBigEndian(payload.subspan(point * 4, 2))) / kAv1ChromaticityUnits,
            static_cast<double>(ReadBigEndian(payload.subspan(point * 4 + 2, 2))) / kAv1ChromaticityUnits};
}

std::optional<MasteringDisplay> ReadAv1Mastering(ByteView payload) {
    MasteringDisplay display;
    const MasteringDisplay::Gamut gamut{Av1PointAt(payload, 0), Av1PointAt(payload, 1), Av1PointAt(payload, 2),
                                        Av1PointAt(payload, 3)};
    if (gamut.red.y > 0 && gamut.green.y > 0 && gamut.blue.y > 0 && gamut.white.y > 0) {
        display.gamut = gamut;
    }
    const double maximum = static_cast<double>(ReadBigEndian(payload.subspan(16, 4))) / kAv1MaxLuminanceUnits;
    const double minimum = static_cast<double>(ReadBigEndian(payload.subspan(20, 4))) / kAv1MinLuminanceUnits;
    if (maximum > minimum) {
        display.luminance = MasteringDisplay::Luminance{maximum, minimum};
    }
    return display.gamut || display.luminance ? std::optional(display) : std::nullopt;
}

std::optional<uint16_t> Av1LightAt(ByteView payload, size_t offset) {
    const auto light = static_cast<uint16_t>(ReadBigEndian(payload.subspan(offset, 2)));
    return light == 0 ? std::nullopt : std::optional(light);
}

void ReadMetadata(ByteView payload, LightMetadata& light) {
    const std::optional<Leb128> type = ReadLeb128(payload);
    if (!type) {
        return;
    }
    const ByteView content = payload.subspan(type->bytes);
    if (type->value == kContentLightMetadata && content.size() >= kLightLevelBytes && !light.maxContentLight &&
        !light.maxFrameAverageLight) {
        light.maxContentLight = Av1LightAt(content, 0);
        light.maxFrameAverageLight = Av1LightAt(content, 2);
    } else if (type->value == kMasteringDisplayMetadata && content.size() >= kMasteringDisplayBytes &&
               !light.mastering) {
        light.mastering = ReadAv1Mastering(content);
    }
}

bool BeginsAFrame(const Av1Obu& obu) {
    return obu.type == Av1ObuType::Frame || obu.type == Av1ObuType::FrameHeader;
}

} // namespace

StreamColour Av1ColourOf(ByteView bytes) {
    StreamColour colour;
    if (const std::optional<Av1SequenceHeader> header = FindAv1SequenceHeader(bytes)) {
        colour.hasParameters = true;
        colour.bitDepth = header->color.bitDepth;
        colour.signal = SignalOf(header->color);
    }
    Av1ObuReader units(IsAv1Configuration(bytes) ? bytes.subspan(kAv1ConfigurationHeadBytes) : bytes);
    for (std::optional<Av1Obu> unit = units.Next(); unit && !BeginsAFrame(*unit); unit = units.Next()) {
        if (unit->type == Av1ObuType::Metadata) {
            ReadMetadata(unit->payload, colour.light);
        }
    }
    return colour;
}

} // namespace codecs

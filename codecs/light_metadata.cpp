#include "codecs/light_metadata.h"

#include "codecs/big_endian.h"
#include "codecs/sei_message.h"
#include "codecs/video_signal.h"

namespace codecs {

namespace {

constexpr uint32_t kMasteringDisplayMessage = 137;
constexpr uint32_t kContentLight = 144;
constexpr uint32_t kAlternativeTransfer = 147;

constexpr size_t kMasteringBytes = 24; // four points of two numbers of two bytes, two numbers of four
constexpr size_t kContentLightBytes = 4;
constexpr uint64_t kChromaticityUnits = 50000;
constexpr double kLuminanceUnits = 10000;
constexpr size_t kPoints = 4; // green, blue, red, white

std::optional<MasteringDisplay::Point> PointAt(ByteView payload, size_t point) {
    const uint64_t x = ReadBigEndian(payload.subspan(point * 4, 2));
    const uint64_t y = ReadBigEndian(payload.subspan(point * 4 + 2, 2));
    if (x > kChromaticityUnits || y == 0 || y > kChromaticityUnits) {
        return std::nullopt;
    }
    return MasteringDisplay::Point{static_cast<double>(x) / kChromaticityUnits,
                                   static_cast<double>(y) / kChromaticityUnits};
}

std::optional<MasteringDisplay> ReadMastering(ByteView payload) {
    if (payload.size() < kMasteringBytes) {
        return std::nullopt;
    }
    MasteringDisplay display;
    const auto green = PointAt(payload, 0);
    const auto blue = PointAt(payload, 1);
    const auto red = PointAt(payload, 2);
    const auto white = PointAt(payload, 3);
    if (green && blue && red && white) {
        display.gamut = MasteringDisplay::Gamut{*red, *green, *blue, *white};
    }
    const uint64_t maximum = ReadBigEndian(payload.subspan(kPoints * 4, 4));
    const uint64_t minimum = ReadBigEndian(payload.subspan(kPoints * 4 + 4, 4));
    if (maximum > minimum) {
        display.luminance = MasteringDisplay::Luminance{static_cast<double>(maximum) / kLuminanceUnits,
                                                        static_cast<double>(minimum) / kLuminanceUnits};
    }
    return display.gamut || display.luminance ? std::optional(display) : std::nullopt;
}

std::optional<uint16_t> LightAt(ByteView payload, size_t offset) {
    const auto light = static_cast<uint16_t>(ReadBigEndian(payload.subspan(offset, 2)));
    return light == 0 ? std::nullopt : std::optional(light);
}

void ReadContentLight(ByteView payload, LightMetadata& light) {
    if (payload.size() < kContentLightBytes || light.maxContentLight || light.maxFrameAverageLight) {
        return;
    }
    light.maxContentLight = LightAt(payload, 0);
    light.maxFrameAverageLight = LightAt(payload, 2);
}

} // namespace

void ReadLightMessages(ByteView payload, LightMetadata& light) {
    while (const std::optional<SeiMessage> message = TakeSeiMessage(payload)) {
        if (message->type == kMasteringDisplayMessage && !light.mastering) {
            light.mastering = ReadMastering(message->payload);
        } else if (message->type == kContentLight) {
            ReadContentLight(message->payload, light);
        } else if (message->type == kAlternativeTransfer && !light.preferredTransfer && !message->payload.empty() &&
                   message->payload.front() != kUnspecifiedColour) {
            light.preferredTransfer = message->payload.front();
        }
    }
}

} // namespace codecs

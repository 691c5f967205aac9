#include "media/described_colour.h"

#include <iterator>
#include <string_view>

#include "codecs/av1_colour.h"
#include "codecs/avc_configuration.h"
#include "codecs/hevc_record.h"
#include "codecs/sequence_header.h"
#include "codecs/stream_colour.h"
#include "media/colour_flags.h"

namespace media {

namespace {

using codecs::StreamColour;

constexpr UINT64 kPerceptualQuantizer = 16;
constexpr UINT64 kHybridLogGamma = 18;
constexpr uint32_t kLeastBitsOfLight = 10; // fewer are not made with a wide range of light

// ---- From the stream's words to Matroska's -----------------------------------------------------------------------

void Tell(Colour& colour, Colour::Number number, UINT64 value) {
    if (IsToldNumber(number, value)) {
        colour.numbers[number] = value;
    }
}

void TellLocation(Colour& colour, uint8_t location) {
    constexpr struct {
        UINT64 horizontally;
        UINT64 vertically;
    } kSitings[] = {{kCosited, kBetween}, {kBetween, kBetween}, {kCosited, kCosited}, {kBetween, kCosited}};
    if (location < std::size(kSitings)) { // there is no word for the others
        colour.numbers[Colour::kChromaSitingHorz] = kSitings[location].horizontally;
        colour.numbers[Colour::kChromaSitingVert] = kSitings[location].vertically;
    }
}

void TellMastering(Colour& colour, const codecs::MasteringDisplay& display) {
    if (display.gamut) {
        const auto& [red, green, blue, white] = *display.gamut;
        size_t next = Colour::kRedX;
        for (const auto& point : {red, green, blue, white}) {
            colour.mastering[next++] = point.x;
            colour.mastering[next++] = point.y;
        }
    }
    if (display.luminance) {
        colour.mastering[Colour::kMaxLuminance] = display.luminance->maximum;
        colour.mastering[Colour::kMinLuminance] = display.luminance->minimum;
    }
}

Colour ColourOf(const StreamColour& stream) {
    Colour colour;
    Tell(colour, Colour::kPrimaries, stream.signal.primaries);
    Tell(colour, Colour::kTransfer, stream.light.preferredTransfer.value_or(stream.signal.transfer));
    Tell(colour, Colour::kMatrix, stream.signal.matrix);
    if (stream.signal.isFullRange) {
        colour.numbers[Colour::kRange] = *stream.signal.isFullRange ? kFullRange : kBroadcastRange;
    }
    if (stream.signal.chromaLocation) {
        TellLocation(colour, *stream.signal.chromaLocation);
    }
    if (stream.light.mastering) {
        TellMastering(colour, *stream.light.mastering);
    }
    Tell(colour, Colour::kMaxContentLight, stream.light.maxContentLight.value_or(0));
    Tell(colour, Colour::kMaxFrameLight, stream.light.maxFrameAverageLight.value_or(0));
    return colour;
}

// ---- What a codec's private data and first frame tell ------------------------------------------------------------

struct Told {
    StreamColour header;
    StreamColour frame;
};
using ReadColour = Told (*)(ByteView codecPrivate, ByteView frame);

Told AvcColour(ByteView codecPrivate, ByteView frame) {
    const codecs::AvcConfiguration record = codecs::ParseAvcConfiguration(codecPrivate);
    const auto units = codecs::FindHeaderUnits(record.parameterSets).value_or(std::vector<ByteView>());
    return {codecs::AvcColourOf(units), codecs::AvcColourOf(codecs::FirstUnitsOf(frame, record.lengthBytes))};
}

Told HevcColour(ByteView codecPrivate, ByteView frame) {
    const auto record = codecs::ParseHevcRecord(codecPrivate);
    if (!record) {
        return {};
    }
    return {codecs::HevcColourOf(record->units),
            codecs::HevcColourOf(codecs::FirstUnitsOf(frame, record->lengthBytes))};
}

Told Av1Colour(ByteView codecPrivate, ByteView frame) {
    return {codecs::Av1ColourOf(codecPrivate), codecs::Av1ColourOf(frame)};
}

constexpr struct {
    std::string_view codecId;
    ReadColour read;
} kCodecs[] = {{"V_MPEG4/ISO/AVC", AvcColour}, {"V_MPEGH/ISO/HEVC", HevcColour}, {"V_AV1", Av1Colour}};

template <typename Value>
void TakeMissing(const std::optional<Value>& other, std::optional<Value>& value) {
    value = value ? value : other;
}

// The header's word counts where both say something.
StreamColour Joined(const Told& told) {
    StreamColour all = told.header.hasParameters ? told.header : told.frame;
    all.light = told.header.light;
    TakeMissing(told.frame.light.mastering, all.light.mastering);
    TakeMissing(told.frame.light.preferredTransfer, all.light.preferredTransfer);
    if (!all.light.maxContentLight && !all.light.maxFrameAverageLight) {
        all.light.maxContentLight = told.frame.light.maxContentLight;
        all.light.maxFrameAverageLight = told.frame.light.maxFrameAverageLight;
    }
    return all;
}

// None of a codec whose stream says nothing that is read here.
std::optional<StreamColour> StreamColourOf(const CodecDescription& description, ByteView frame) {
    for (const auto& codec : kCodecs) {
        if (description.codecId == codec.codecId) { // AV1 may come without private data
            return Joined(codec.read(description.codecPrivate.value_or(std::vector<BYTE>()), frame));
        }
    }
    return std::nullopt;
}

// ---- All of them -------------------------------------------------------------------------------------------------

Colour FlagColourOf(const AM_MEDIA_TYPE& type) {
    if (type.formattype != FORMAT_VideoInfo2 && type.formattype != FORMAT_MPEG2Video) {
        return {};
    }
    const auto header = FormatBlock(type).Read<VIDEOINFOHEADER2>();
    return header ? ColourOfFlags(header->dwControlFlags) : Colour();
}

Colour Joined(const AM_MEDIA_TYPE& type, const std::optional<StreamColour>& stream) {
    Colour colour = FlagColourOf(type);
    if (stream) {
        const Colour told = ColourOf(*stream);
        TakeExact(told, colour);
        colour.TakeMissing(told);
    }
    return colour;
}

bool MayTellMore(const StreamColour& header, const Colour& colour) {
    const auto& transfer = colour.numbers[Colour::kTransfer];
    const bool isWide = transfer == kPerceptualQuantizer || transfer == kHybridLogGamma;
    const bool isAllTold = colour.TellsMastering() && colour.numbers[Colour::kMaxContentLight];
    return !header.hasParameters || ((isWide || header.bitDepth >= kLeastBitsOfLight) && !isAllTold);
}

} // namespace

void DescribeColour(const AM_MEDIA_TYPE& type, CodecDescription& description) {
    const std::optional<StreamColour> stream = StreamColourOf(description, {});
    description.video->colour = Joined(type, stream);
    description.video->mayTellColourLater = stream && MayTellMore(*stream, description.video->colour);
}

Colour ColourWithFirstFrame(const AM_MEDIA_TYPE& type, ByteView frame) {
    return Joined(type, StreamColourOf(DescribeStrictCodec(type), frame));
}

} // namespace media

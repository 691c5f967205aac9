#include "codecs/av1_sequence_header.h"

#include "codecs/av1_configuration.h"
#include "codecs/av1_obu.h"
#include "codecs/bitstream_reader.h"

namespace codecs {

namespace {

constexpr uint8_t kMaxProfile = 2;
constexpr uint8_t kProfileHigh = 1;
constexpr uint8_t kLevelWithTier = 7; // those above tell it

constexpr uint8_t kBt709Primaries = 1;
constexpr uint8_t kSrgbTransfer = 13;
constexpr uint8_t kIdentityMatrix = 0;

uint8_t ReadByte(BitstreamReader& bits, unsigned count) {
    return static_cast<uint8_t>(bits.ReadBits(count));
}

struct DecoderModel {
    bool isPresent = false;
    unsigned delayBits = 0;
};

DecoderModel ReadDecoderModel(BitstreamReader& bits) {
    DecoderModel model;
    model.isPresent = bits.ReadFlag();
    if (model.isPresent) {
        model.delayBits = bits.ReadBits(5) + 1;
        bits.SkipBits(32 + 5 + 5); // a tick of decoding, two lengths
    }
    return model;
}

DecoderModel ReadTiming(BitstreamReader& bits, Av1SequenceHeader& header) {
    if (!bits.ReadFlag()) {
        return {};
    }
    const uint32_t tickUnits = bits.ReadBits(32);
    header.ticksPerSecond = bits.ReadBits(32);
    if (bits.ReadFlag()) { // all frames last as long
        header.frameTicks = uint64_t{tickUnits} * (uint64_t{bits.ReadUE()} + 1);
    }
    return ReadDecoderModel(bits);
}

void ReadOperatingPoint(BitstreamReader& bits, const DecoderModel& model, bool hasDisplayDelay, bool isFirst,
                        Av1SequenceHeader& header) {
    bits.SkipBits(12); // which layers
    const uint8_t level = ReadByte(bits, 5);
    const uint8_t tier = level > kLevelWithTier ? ReadByte(bits, 1) : uint8_t{0};
    if (isFirst) {
        header.level = level;
        header.tier = tier;
    }
    if (model.isPresent && bits.ReadFlag()) {
        bits.SkipBits(2 * model.delayBits + 1);
    }
    if (hasDisplayDelay && bits.ReadFlag()) {
        bits.SkipBits(4);
    }
}

void ReadOperatingPoints(BitstreamReader& bits, Av1SequenceHeader& header) {
    if (header.isReduced) {
        header.level = ReadByte(bits, 5);
        return;
    }
    const DecoderModel model = ReadTiming(bits, header);
    const bool hasDisplayDelay = bits.ReadFlag();
    const uint32_t count = bits.ReadBits(5) + 1;
    for (uint32_t point = 0; point < count; ++point) {
        ReadOperatingPoint(bits, model, hasDisplayDelay, point == 0, header);
    }
}

void ReadSize(BitstreamReader& bits, Av1SequenceHeader& header) {
    const unsigned widthBits = bits.ReadBits(4) + 1;
    const unsigned heightBits = bits.ReadBits(4) + 1;
    header.maxWidth = bits.ReadBits(widthBits) + 1;
    header.maxHeight = bits.ReadBits(heightBits) + 1;
}

void SkipInterTools(BitstreamReader& bits) {
    bits.SkipBits(4); // interintra and masked compound, warped motion, dual filter
    const bool hasOrderHint = bits.ReadFlag();
    if (hasOrderHint) {
        bits.SkipBits(2);
    }
    const bool choosesScreenContent = bits.ReadFlag();
    const bool mayHaveScreenContent = choosesScreenContent || bits.ReadFlag();
    if (mayHaveScreenContent && !bits.ReadFlag()) { // nor is it chosen whether vectors are whole numbers
        bits.SkipBits(1);
    }
    if (hasOrderHint) {
        bits.SkipBits(3);
    }
}

void SkipTools(BitstreamReader& bits, bool isReduced) {
    if (!isReduced && bits.ReadFlag()) { // frames have numbers
        bits.SkipBits(4 + 3);
    }
    bits.SkipBits(3); // superblocks, two intra tools
    if (!isReduced) {
        SkipInterTools(bits);
    }
    bits.SkipBits(3); // superres, cdef, restoration
}

uint8_t ReadBitDepth(BitstreamReader& bits, uint8_t profile) {
    if (!bits.ReadFlag()) {
        return 8;
    }
    return profile == kMaxProfile && bits.ReadFlag() ? 12 : 10;
}

void ReadSubsampling(BitstreamReader& bits, uint8_t profile, Av1Color& color) {
    color.subsamplingX = profile != kProfileHigh;
    color.subsamplingY = profile == 0;
    if (profile == kMaxProfile && color.bitDepth == 12) {
        color.subsamplingX = bits.ReadFlag();
        color.subsamplingY = color.subsamplingX && bits.ReadFlag();
    }
    if (color.subsamplingX && color.subsamplingY) {
        color.chromaSamplePosition = ReadByte(bits, 2);
    }
}

bool IsSrgb(const Av1Color& color) {
    return color.primaries == kBt709Primaries && color.transferCharacteristics == kSrgbTransfer &&
           color.matrixCoefficients == kIdentityMatrix;
}

Av1Color ReadColor(BitstreamReader& bits, uint8_t profile) {
    Av1Color color;
    color.bitDepth = ReadBitDepth(bits, profile);
    color.isMonochrome = profile != kProfileHigh && bits.ReadFlag();
    color.isDescribed = bits.ReadFlag();
    if (color.isDescribed) {
        color.primaries = ReadByte(bits, 8);
        color.transferCharacteristics = ReadByte(bits, 8);
        color.matrixCoefficients = ReadByte(bits, 8);
    }
    if (!color.isMonochrome && IsSrgb(color)) {
        color.isFullRange = true;
        color.subsamplingX = color.subsamplingY = false;
        return color;
    }
    color.isFullRange = bits.ReadFlag();
    if (!color.isMonochrome) {
        ReadSubsampling(bits, profile, color);
    }
    return color;
}

} // namespace

std::optional<Av1SequenceHeader> ParseAv1SequenceHeader(ByteView payload) {
    BitstreamReader bits(payload);
    Av1SequenceHeader header;
    header.profile = ReadByte(bits, 3);
    header.isStillPicture = bits.ReadFlag();
    header.isReduced = bits.ReadFlag();
    if (header.profile > kMaxProfile || (header.isReduced && !header.isStillPicture)) {
        return std::nullopt;
    }
    ReadOperatingPoints(bits, header);
    ReadSize(bits, header);
    SkipTools(bits, header.isReduced);
    header.color = ReadColor(bits, header.profile);
    const bool isMono = header.color.isMonochrome;
    bits.SkipBits(isMono ? 1 : 2); // whether planes of colour have quantizers of their own, film grain
    return bits.IsValid() ? std::optional(header) : std::nullopt;
}

std::optional<Av1SequenceHeader> FindAv1SequenceHeader(ByteView bytes) {
    Av1ObuReader reader(IsAv1Configuration(bytes) ? bytes.subspan(kAv1ConfigurationHeadBytes) : bytes);
    while (const std::optional<Av1Obu> obu = reader.Next()) {
        if (obu->type == Av1ObuType::SequenceHeader) {
            return ParseAv1SequenceHeader(obu->payload);
        }
    }
    return std::nullopt;
}

} // namespace codecs

#include "codecs/audio_specific_config.h"

#include <algorithm>
#include <array>

#include "codecs/big_endian.h"
#include "codecs/bitstream_reader.h"

namespace codecs {

namespace {

constexpr std::array<uint32_t, 13> kRates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                          22050, 16000, 12000, 11025, 8000,  7350};
constexpr uint32_t kRateFollows = 15;
constexpr uint32_t kMaxRateHz = (1U << 24) - 1;
constexpr uint32_t kObjectTypeFollows = 31;
constexpr std::array<uint32_t, 8> kChannels{0, 1, 2, 3, 4, 5, 6, 8};

constexpr uint32_t kLowComplexity = 2;
constexpr uint32_t kSpectralBandReplication = 5;
constexpr uint32_t kScalable = 6;
constexpr uint32_t kErrorResilientScalable = 20;
constexpr uint32_t kBitSlicedArithmetic = 22;
constexpr uint32_t kParametricStereo = 29;
constexpr uint32_t kSyncExtension = 0x2b7;

uint32_t ReadObjectType(BitstreamReader& reader) {
    const uint32_t type = reader.ReadBits(5);
    return type == kObjectTypeFollows ? 32 + reader.ReadBits(6) : type;
}

uint32_t ReadRate(BitstreamReader& reader) {
    const uint32_t index = reader.ReadBits(4);
    if (index == kRateFollows) {
        return reader.ReadBits(24);
    }
    return index < kRates.size() ? kRates[index] : 0;
}

bool HasGeneralConfig(uint32_t type) {
    return (type >= 1 && type <= 7 && type != kSpectralBandReplication) || type == 17 || (type >= 19 && type <= 23);
}

// GASpecificConfig; invalidates the reader where channels of its own follow.
void SkipGeneralConfig(BitstreamReader& reader, const AudioSpecificConfig& config) {
    reader.ReadFlag(); // frameLengthFlag
    if (reader.ReadFlag()) {
        reader.SkipBits(14); // coreCoderDelay
    }
    const bool hasExtension = reader.ReadFlag();
    if (config.channels == 0 || !HasGeneralConfig(config.objectType)) {
        reader.Invalidate();
    }
    if (config.objectType == kScalable || config.objectType == kErrorResilientScalable) {
        reader.SkipBits(3); // layerNr
    }
    if (hasExtension) {
        const bool isSliced = config.objectType == kBitSlicedArithmetic;
        const bool isResilient = config.objectType >= 17 && !isSliced;
        reader.SkipBits(isSliced ? 5 + 11 : isResilient ? 3 : 0);
        reader.SkipBits(1); // extensionFlag3
    }
}

// Told behind the rest, where older decoders do not look.
std::optional<uint32_t> ReadExtendedRate(BitstreamReader reader, const AudioSpecificConfig& config) {
    SkipGeneralConfig(reader, config);
    const bool isReplicated = reader.ReadBits(11) == kSyncExtension &&
                              ReadObjectType(reader) == kSpectralBandReplication && reader.ReadFlag();
    const uint32_t rate = isReplicated ? ReadRate(reader) : 0;
    return reader.IsValid() && rate != 0 ? std::optional(rate) : std::nullopt;
}

} // namespace

std::optional<AudioSpecificConfig> ParseAudioSpecificConfig(ByteView bytes) {
    BitstreamReader reader(bytes);
    AudioSpecificConfig config;
    config.objectType = ReadObjectType(reader);
    config.rateHz = ReadRate(reader);
    const uint32_t channels = reader.ReadBits(4);
    config.channels = channels < kChannels.size() ? kChannels[channels] : 0;
    if (config.objectType == kSpectralBandReplication || config.objectType == kParametricStereo) {
        config.outputRateHz = ReadRate(reader);
        config.objectType = ReadObjectType(reader);
    } else {
        config.outputRateHz = ReadExtendedRate(reader, config);
    }
    const bool isSane = reader.IsValid() && config.objectType != 0 && config.rateHz != 0 && config.outputRateHz != 0U;
    return isSane ? std::optional(config) : std::nullopt;
}

std::optional<std::vector<uint8_t>> MakeAudioSpecificConfig(uint32_t rateHz, uint32_t channels) {
    const auto configuration = std::find(kChannels.begin() + 1, kChannels.end(), channels);
    if (configuration == kChannels.end() || rateHz == 0 || rateHz > kMaxRateHz) {
        return std::nullopt;
    }
    // Five bits of object type, four of the rate, perhaps 24 more, four of channels, and three flags that are 0.
    const auto index = static_cast<uint32_t>(std::ranges::find(kRates, rateHz) - kRates.begin());
    const bool isListed = index < kRates.size();
    uint64_t bits = kLowComplexity << 4 | (isListed ? index : kRateFollows);
    bits = isListed ? bits : bits << 24 | rateHz;
    bits = (bits << 4 | static_cast<uint64_t>(configuration - kChannels.begin())) << 3;
    std::vector<uint8_t> config;
    AppendBigEndian(config, bits, isListed ? 2 : 5);
    return config;
}

} // namespace codecs

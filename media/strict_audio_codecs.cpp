#include "media/strict_audio_codecs.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "codecs/alac_config.h"
#include "codecs/audio_specific_config.h"
#include "codecs/big_endian.h"
#include "codecs/opus_head.h"
#include "dshow/media_subtypes.h"

namespace media {

namespace {

// ---- AAC ---------------------------------------------------------------------------------------------------------

// The configuration knows the rate of the core; format blocks have the one or the other.
bool RefineAac(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    AudioDescription& audio = *description.audio;
    if (description.codecPrivate->empty()) {
        description.codecPrivate = codecs::MakeAudioSpecificConfig(audio.samplingFrequencyHz, audio.channels);
        return description.codecPrivate.has_value();
    }
    if (const auto config = codecs::ParseAudioSpecificConfig(*description.codecPrivate)) {
        audio.samplingFrequencyHz = config->rateHz;
        audio.outputSamplingFrequencyHz = config->outputRateHz;
        audio.channels = audio.channels != 0 ? audio.channels : config->channels;
    }
    return true;
}

// ---- Opus --------------------------------------------------------------------------------------------------------

constexpr UINT64 kOpusSeekPreRollNs = 80'000'000;
constexpr UINT64 kNsASecondOfOpus = 1'000'000'000;

bool RefineOpus(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    AudioDescription& audio = *description.audio;
    std::optional<codecs::OpusHead> head = codecs::ParseOpusHead(*description.codecPrivate);
    if (!head) {
        description.codecPrivate = codecs::MakeOpusHead(audio.channels, audio.samplingFrequencyHz);
        head = codecs::ParseOpusHead(description.codecPrivate.value_or(std::vector<BYTE>()));
    }
    if (!head) {
        return false;
    }
    audio.samplingFrequencyHz = codecs::kOpusRateHz; // whatever the source's was
    audio.channels = head->channels;
    description.codecDelayNs = (head->preSkip * kNsASecondOfOpus + codecs::kOpusRateHz / 2) / codecs::kOpusRateHz;
    description.seekPreRollNs = kOpusSeekPreRollNs;
    return true;
}

// ---- FLAC --------------------------------------------------------------------------------------------------------

constexpr BYTE kFlacMagic[] = {'f', 'L', 'a', 'C'};
constexpr BYTE kStreamInfoHead[] = {0, 0, 0, 34}; // of its block: the kind, and 34 bytes
constexpr BYTE kLastBlock = 0x80;
constexpr size_t kStreamInfoBytes = 34;

bool BeginsStreamInfo(ByteView bytes) {
    return bytes.size() >= sizeof(kStreamInfoHead) + kStreamInfoBytes && (bytes[0] & ~kLastBlock) == 0 &&
           std::equal(std::begin(kStreamInfoHead) + 1, std::end(kStreamInfoHead), bytes.begin() + 1);
}

// The marker and the blocks behind it, whichever part of that the splitter hands over.
bool RefineFlac(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    std::vector<BYTE>& bytes = *description.codecPrivate;
    if (bytes.size() == kStreamInfoBytes) {
        bytes.insert(bytes.begin(), std::begin(kStreamInfoHead), std::end(kStreamInfoHead));
        bytes[0] |= kLastBlock;
    }
    if (BeginsStreamInfo(bytes)) {
        bytes.insert(bytes.begin(), std::begin(kFlacMagic), std::end(kFlacMagic));
    }
    return true;
}

// ---- PCM ---------------------------------------------------------------------------------------------------------

// Nothing can be read of samples without a depth.
bool RefinePcm(const CodecRow& /*row*/, const FormatBlock& block, CodecDescription& description) {
    AudioDescription& audio = *description.audio;
    const auto wave = block.Read<WAVEFORMATEX>();
    if (audio.bitDepth == 0U && wave && audio.channels != 0) {
        audio.bitDepth = wave->nBlockAlign * codecs::kBitsInByte / audio.channels;
    }
    return audio.bitDepth != 0U;
}

// Two of the subtypes name the depth. Samples of one byte would be signed here, and are unsigned in a track.
bool RefineBigEndianPcm(const CodecRow& row, const FormatBlock& block, CodecDescription& description) {
    constexpr UINT32 kDepthOfIn24 = 24;
    constexpr UINT32 kDepthOfIn32 = 32;
    if (*row.subtype == mediasubtype::kIn24) {
        description.audio->bitDepth = kDepthOfIn24;
    } else if (*row.subtype == mediasubtype::kIn32) {
        description.audio->bitDepth = kDepthOfIn32;
    }
    return RefinePcm(row, block, description) && description.audio->bitDepth != codecs::kBitsInByte;
}

// ---- ALAC --------------------------------------------------------------------------------------------------------

// The configuration without the atoms that may lie around it; it knows depth, channels and rate.
bool RefineAlac(const CodecRow& /*row*/, const FormatBlock& /*block*/, CodecDescription& description) {
    std::vector<BYTE> cookie = CopyOf(codecs::BareAlacCookie(*description.codecPrivate));
    const auto config = codecs::ParseAlacConfig(cookie);
    if (!config) {
        return false;
    }
    description.codecPrivate = std::move(cookie);
    description.audio = AudioDescription{config->rateHz, config->channels, config->bitDepth};
    return true;
}

// ---- MPEG audio and RealAudio ------------------------------------------------------------------------------------

// The tag stands for all layers; without the longer structure it is the second.
bool RefineMpegAudio(const CodecRow& /*row*/, const FormatBlock& block, CodecDescription& description) {
    const auto layer = block.Read<WORD>(sizeof(WAVEFORMATEX));
    if (layer == ACM_MPEG_LAYER1) {
        description.codecId = "A_MPEG/L1";
    } else if (layer == ACM_MPEG_LAYER3) {
        description.codecId = "A_MPEG/L3";
    }
    return true;
}

bool RefineReal(const CodecRow& row, const FormatBlock& /*block*/, CodecDescription& description) {
    description.codecId = row.readFrom != nullptr ? row.readFrom : row.codecId;
    return true;
}

constexpr StrictCodec kAudioCodecs[] = {
    {"A_AAC", RefineAac},
    {"A_OPUS", RefineOpus},
    {"A_FLAC", RefineFlac},
    {"A_PCM/INT/LIT", RefinePcm},
    {"A_PCM/FLOAT/IEEE", RefinePcm},
    {"A_MPEG/L2", RefineMpegAudio},
    {"A_REAL/", RefineReal},
    {"A_PCM/INT/BIG", RefineBigEndianPcm},
    {"A_ALAC", RefineAlac},
};

} // namespace

const StrictCodec* FindStrictAudioCodec(std::string_view codecId) {
    const auto found = std::ranges::find(kAudioCodecs, codecId, &StrictCodec::codecId);
    return found == std::end(kAudioCodecs) ? nullptr : found;
}

} // namespace media

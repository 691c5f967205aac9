#include "media/wave_layouts.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

#include "codecs/big_endian.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"

namespace media {

namespace {

static_assert(sizeof(WAVEFORMATEX) == 18);

// WAVEFORMATEX without its last field, which types of the older structures lack: PCMWAVEFORMAT.
struct PlainWaveFormat {
    WORD wFormatTag;
    WORD nChannels;
    DWORD nSamplesPerSec;
    DWORD nAvgBytesPerSec;
    WORD nBlockAlign;
    WORD wBitsPerSample;
};
static_assert(sizeof(PlainWaveFormat) == 16);

constexpr double kMaxSamplingFrequency = 4e9; // fits a DWORD

// ---- Out of the block --------------------------------------------------------------------------------------------

bool DescribePlainWave(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<PlainWaveFormat>();
    if (!format) {
        return false;
    }
    description.audio = AudioDescription{format->nSamplesPerSec, format->nChannels, format->wBitsPerSample};
    return true;
}

// What follows the structure, as long as the block is: cbSize is not asked.
bool DescribeExtraWave(const FormatBlock& block, CodecDescription& description) {
    const auto extra = block.From(sizeof(WAVEFORMATEX));
    if (!extra || !DescribePlainWave(block, description)) {
        return false;
    }
    description.codecPrivate = CopyOf(*extra);
    return true;
}

bool DescribeWholeWave(const FormatBlock& block, CodecDescription& description) {
    if (!block.Read<WAVEFORMATEX>() ||
        !DescribePlainWave(block, description)) { // the private data holds that structure
        return false;
    }
    description.codecPrivate = CopyOf(block.Bytes());
    return true;
}

// The one codec whose extra bytes are counted by cbSize, and whose bit depth is left out when it is 0.
bool DescribeOpus(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<WAVEFORMATEX>();
    if (!format || !DescribePlainWave(block, description)) {
        return false;
    }
    const auto extra = block.Slice(sizeof(WAVEFORMATEX), format->cbSize);
    if (!extra) {
        return false;
    }
    if (format->wBitsPerSample == 0) {
        description.audio->bitDepth.reset();
    }
    description.codecPrivate = CopyOf(*extra);
    return true;
}

// ---- And back ----------------------------------------------------------------------------------------------------

std::optional<WORD> WaveTagIn(const GUID& subtype) {
    const bool isTag = subtype.Data1 <= UINT16_MAX && subtype == SubtypeFromFourCC(subtype.Data1);
    return isTag ? std::optional(static_cast<WORD>(subtype.Data1)) : std::nullopt;
}

// That of the subtype, or that of the codec's other type; 0 where neither has one.
WORD WaveTagOf(const CodecRow& row) {
    if (const auto own = WaveTagIn(*row.subtype)) {
        return *own;
    }
    for (const CodecRow& other : CodecTable()) {
        if (other.layout == row.layout && std::string_view(other.codecId) == row.codecId) {
            if (const auto tag = WaveTagIn(*other.subtype)) {
                return *tag;
            }
        }
    }
    return 0;
}

WAVEFORMATEX WaveOf(const AudioFacts& audio, const CodecRow& row) {
    WAVEFORMATEX wave{};
    wave.wFormatTag = WaveTagOf(row);
    wave.nChannels = ChannelsOf(audio);
    wave.nSamplesPerSec = SamplesPerSecond(audio);
    wave.wBitsPerSample = BitsPerSample(audio);
    if (std::string_view(row.codecId).starts_with("A_PCM/")) {
        wave.nBlockAlign = static_cast<WORD>(wave.nChannels * (wave.wBitsPerSample / codecs::kBitsInByte));
        wave.nAvgBytesPerSec = wave.nSamplesPerSec * wave.nBlockAlign;
    }
    return wave;
}

// cbSize has to hold the length, for players that ask it.
bool HasTooMuchPrivate(const TrackFacts& track) {
    return track.codecPrivate.size() > UINT16_MAX;
}

// What the track has of private data is of no use to this codec.
std::optional<CMediaType> PlainWaveTypeOf(const CodecRow& row, const TrackFacts& track) {
    return WaveType(*row.subtype, WaveOf(track.audio, row), {});
}

std::optional<CMediaType> ExtraWaveTypeOf(const CodecRow& row, const TrackFacts& track) {
    return HasTooMuchPrivate(track)
               ? std::nullopt
               : std::optional(WaveType(*row.subtype, WaveOf(track.audio, row), track.codecPrivate));
}

// The subtype that names the depth, where there is one. Samples of eight bits have no order of bytes, and tracks have
// them unsigned.
std::optional<CMediaType> BigEndianTypeOf(const CodecRow& row, const TrackFacts& track) {
    const UINT64 depth = track.audio.bitDepth;
    const GUID& usual = depth == 24 ? mediasubtype::kIn24 : depth == 32 ? mediasubtype::kIn32 : mediasubtype::kTwos;
    if (*row.subtype != usual) {
        return std::nullopt;
    }
    WAVEFORMATEX wave = WaveOf(track.audio, row);
    const bool isOneByte = depth == codecs::kBitsInByte;
    wave.wFormatTag = isOneByte ? WAVE_FORMAT_PCM : wave.wFormatTag;
    return WaveType(isOneByte ? mediasubtype::kPcm : usual, wave, {});
}

std::optional<CMediaType> WholeWaveTypeOf(const CodecRow& /*row*/, const TrackFacts& track) {
    return WholeWaveType(track.codecPrivate);
}

} // namespace

DWORD SamplesPerSecond(const AudioFacts& audio) {
    const bool isSane = audio.samplingFrequency > 0 && audio.samplingFrequency < kMaxSamplingFrequency;
    return isSane ? static_cast<DWORD>(std::llround(audio.samplingFrequency)) : 0;
}

WORD ChannelsOf(const AudioFacts& audio) {
    return static_cast<WORD>(std::min<UINT64>(audio.channels, UINT16_MAX));
}

WORD BitsPerSample(const AudioFacts& audio) {
    return static_cast<WORD>(std::min<UINT64>(audio.bitDepth, UINT16_MAX));
}

constexpr CodecLayout kPlainWaveLayout{.describe = DescribePlainWave, .typeOf = PlainWaveTypeOf};
constexpr CodecLayout kExtraWaveLayout{.describe = DescribeExtraWave, .typeOf = ExtraWaveTypeOf};
constexpr CodecLayout kOpusLayout{.describe = DescribeOpus, .typeOf = ExtraWaveTypeOf};
constexpr CodecLayout kBigEndianLayout{.describe = DescribePlainWave, .typeOf = BigEndianTypeOf};
constexpr CodecLayout kWholeWaveLayout{.describe = DescribeWholeWave, .typeOf = WholeWaveTypeOf};

} // namespace media

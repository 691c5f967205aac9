#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>

#include "codecs/big_endian.h"
#include "codecs/vorbis_headers.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "media/vorbis_private.h"
#include "sources/matroska/media_types_of.h"

namespace matroska {

namespace {

// {B36E107F-A938-4387-93C7-55E966757473}
constexpr GUID kFormatVorbis2{0xb36e107f, 0xa938, 0x4387, {0x93, 0xc7, 0x55, 0xe9, 0x66, 0x75, 0x74, 0x73}};

constexpr double kMaxSamplingFrequency = 4e9; // fits a DWORD
constexpr size_t kPcmWaveFormatBytes = 16;    // the oldest form, without cbSize

enum class Private { None, Extra };

struct AudioRow {
    const char* codecId;
    GUID subtype;
    Private codecPrivate;
};

// A codec with two rows has two types.
const AudioRow kRows[] = {
    {"A_AC3", mediasubtype::kDolbyAc3, Private::None},
    {"A_AC3", mediasubtype::kAc3WaveTag, Private::None},
    {"A_EAC3", mediasubtype::kDolbyDdPlus, Private::None},
    {"A_TRUEHD", mediasubtype::kDolbyTrueHd, Private::None},
    {"A_MPEG/L3", mediasubtype::kMp3, Private::None},
    {"A_MPEG/L2", mediasubtype::kMpeg1Audio, Private::None},
    {"A_DTS", mediasubtype::kDts, Private::None},
    {"A_DTS", mediasubtype::kDtsWaveTag, Private::None},
    {"A_PCM/INT/LIT", mediasubtype::kPcm, Private::None},
    {"A_PCM/FLOAT/IEEE", mediasubtype::kIeeeFloat, Private::None},
    {"A_TTA1", mediasubtype::kTta1, Private::Extra},
    {"A_WAVPACK4", mediasubtype::kWavPack4, Private::Extra},
    {"A_OPUS", mediasubtype::kOpus, Private::Extra},
    {"A_FLAC", mediasubtype::kFlacFramed, Private::Extra},
    {"A_AAC", mediasubtype::kRawAac, Private::Extra},
    {"A_REAL/14_4", SubtypeFromWaveTag(0x2002), Private::Extra},
    {"A_REAL/28_8", SubtypeFromWaveTag(0x2003), Private::Extra},
    {"A_REAL/COOK", SubtypeFromWaveTag(0x2004), Private::Extra},
    {"A_REAL/SIPR", SubtypeFromWaveTag(0x0130), Private::Extra},
    {"A_REAL/ATRC", SubtypeFromWaveTag(0x0270), Private::Extra},
    {"A_REAL/", SubtypeFromWaveTag(0x2004), Private::Extra},
};

DWORD SamplesPerSecond(const AudioTrack& audio) {
    const bool isSane = audio.samplingFrequency > 0 && audio.samplingFrequency < kMaxSamplingFrequency;
    return isSane ? static_cast<DWORD>(std::llround(audio.samplingFrequency)) : 0;
}

// That of the subtype, or that of the codec's other type; 0 where neither has one.
WORD WaveTagOf(const GUID& subtype) {
    if (subtype == mediasubtype::kDolbyAc3) {
        return static_cast<WORD>(mediasubtype::kAc3WaveTag.Data1);
    }
    if (subtype == mediasubtype::kDts) {
        return static_cast<WORD>(mediasubtype::kDtsWaveTag.Data1);
    }
    const bool isTag = subtype.Data1 <= UINT16_MAX && subtype == SubtypeFromFourCC(subtype.Data1);
    return isTag ? static_cast<WORD>(subtype.Data1) : WORD{0};
}

WAVEFORMATEX WaveOf(const AudioTrack& audio, const GUID& subtype) {
    WAVEFORMATEX wave{};
    wave.wFormatTag = WaveTagOf(subtype);
    wave.nChannels = static_cast<WORD>(std::min<UINT64>(audio.channels, UINT16_MAX));
    wave.nSamplesPerSec = SamplesPerSecond(audio);
    wave.wBitsPerSample = static_cast<WORD>(std::min<UINT64>(audio.bitDepth, UINT16_MAX));
    if (subtype == mediasubtype::kPcm || subtype == mediasubtype::kIeeeFloat) {
        wave.nBlockAlign = static_cast<WORD>(wave.nChannels * (wave.wBitsPerSample / codecs::kBitsInByte));
        wave.nAvgBytesPerSec = wave.nSamplesPerSec * wave.nBlockAlign;
    }
    return wave;
}

// The codec private data is a whole WAVEFORMATEX, possibly of the oldest form.
std::vector<CMediaType> AcmTypes(const Track& track) {
    std::vector<BYTE> block = track.codecPrivate;
    if (block.size() < kPcmWaveFormatBytes) {
        return {};
    }
    block.resize(std::max(block.size(), sizeof(WAVEFORMATEX)));
    WORD tag = 0;
    std::memcpy(&tag, block.data(), sizeof(tag));
    return {media::TypeWithFormat(MEDIATYPE_Audio, SubtypeFromWaveTag(tag), FORMAT_WaveFormatEx, block)};
}

std::vector<CMediaType> VorbisTypes(const Track& track) {
    const std::optional<codecs::VorbisHeaders> headers = codecs::TakeVorbisHeadersApart(track.codecPrivate);
    if (!headers) {
        return {};
    }
    media::VorbisFormat format{};
    format.channels = static_cast<UINT32>(std::min<UINT64>(track.audio.channels, UINT16_MAX));
    format.samplesPerSec = SamplesPerSecond(track.audio);
    format.bitsPerSample = static_cast<UINT32>(std::min<UINT64>(track.audio.bitDepth, UINT16_MAX));
    std::vector<BYTE> block(sizeof(format));
    for (size_t i = 0; i < codecs::kVorbisHeaders; ++i) {
        const codecs::ByteView header = (*headers)[i];
        format.headerSize[i] = static_cast<UINT32>(header.size());
        block.insert(block.end(), header.begin(), header.end());
    }
    std::memcpy(block.data(), &format, sizeof(format));
    return {media::TypeWithFormat(MEDIATYPE_Audio, mediasubtype::kVorbis, kFormatVorbis2, block)};
}

} // namespace

std::vector<CMediaType> AudioTypesOf(const Track& track) {
    if (track.codecId == "A_MS/ACM") {
        return AcmTypes(track);
    }
    if (track.codecId == "A_VORBIS") {
        return VorbisTypes(track);
    }
    std::vector<CMediaType> types;
    for (const AudioRow& row : kRows) {
        if (track.codecId == row.codecId && track.codecPrivate.size() <= UINT16_MAX) {
            const bool hasExtra = row.codecPrivate == Private::Extra;
            types.push_back(media::WaveType(row.subtype, WaveOf(track.audio, row.subtype),
                                            hasExtra ? media::ByteView(track.codecPrivate) : media::ByteView()));
        }
    }
    return types;
}

} // namespace matroska

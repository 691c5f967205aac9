#include "media/audio_codec_mapper.h"

#include "dshow/media_subtypes.h"
#include "media/format_block.h"
#include "media/vorbis_private.h"

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

// ---- One function a layout; false when the format block does not hold it ----------------------------------------

bool DescribePlain(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<PlainWaveFormat>();
    if (!format) {
        return false;
    }
    description.audio = AudioDescription{format->nSamplesPerSec, format->nChannels, format->wBitsPerSample};
    return true;
}

// What follows the structure, as long as the block is: cbSize is not asked.
bool DescribeWithExtraBytes(const FormatBlock& block, CodecDescription& description) {
    const auto extra = block.From(sizeof(WAVEFORMATEX));
    if (!extra || !DescribePlain(block, description)) {
        return false;
    }
    description.codecPrivate = CopyOf(*extra);
    return true;
}

bool DescribeWithWholeBlock(const FormatBlock& block, CodecDescription& description) {
    if (!block.Read<WAVEFORMATEX>() || !DescribePlain(block, description)) { // the private data holds that structure
        return false;
    }
    description.codecPrivate = CopyOf(block.Bytes());
    return true;
}

// The one codec whose extra bytes are counted by cbSize, and whose bit depth is left out when it is 0.
bool DescribeOpus(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<WAVEFORMATEX>();
    if (!format || !DescribePlain(block, description)) {
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

bool DescribeVorbis(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<VorbisFormat>();
    if (!format) {
        return false;
    }
    description.audio = AudioDescription{format->samplesPerSec, format->channels, std::nullopt};
    description.codecPrivate = BuildVorbisPrivate(block, *format);
    return description.codecPrivate.has_value();
}

// ---- The rows, in the order in which they are tried --------------------------------------------------------------

struct AudioRow {
    GUID subtype;
    const char* codecId;
    bool (*describe)(const FormatBlock&, CodecDescription&);
};

// clang-format off
constexpr AudioRow kRows[] = {
    {mediasubtype::kAc3WaveTag,  "A_AC3",            DescribePlain},
    {mediasubtype::kDolbyAc3,    "A_AC3",            DescribePlain},
    {mediasubtype::kDolbyDdPlus, "A_EAC3",           DescribePlain},
    {mediasubtype::kDolbyTrueHd, "A_TRUEHD",         DescribePlain},
    {mediasubtype::kMp3,         "A_MPEG/L3",        DescribePlain},
    {mediasubtype::kMpeg1Audio,  "A_MPEG/L2",        DescribePlain},
    {mediasubtype::kDtsWaveTag,  "A_DTS",            DescribePlain},
    {mediasubtype::kDts,         "A_DTS",            DescribePlain},
    {mediasubtype::kPcm,         "A_PCM/INT/LIT",    DescribePlain},
    {mediasubtype::kIeeeFloat,   "A_PCM/FLOAT/IEEE", DescribePlain},
    {mediasubtype::kTta1,        "A_TTA1",           DescribeWithExtraBytes},
    {mediasubtype::kWavPack4,    "A_WAVPACK4",       DescribeWithExtraBytes},
    {mediasubtype::kOpus,        "A_OPUS",           DescribeOpus},
    {mediasubtype::kVorbis,      "A_VORBIS",         DescribeVorbis},
    {mediasubtype::kFlacFramed,  "A_FLAC",           DescribeWithExtraBytes},
    {mediasubtype::kRawAac,      "A_AAC",            DescribeWithExtraBytes},
    // Nothing after the slash, deliberately. The filter refuses these types; only other users of the writer get here.
    {SubtypeFromWaveTag(0x2002), "A_REAL/",          DescribeWithExtraBytes},
    {SubtypeFromWaveTag(0x2003), "A_REAL/",          DescribeWithExtraBytes},
    {SubtypeFromWaveTag(0x2004), "A_REAL/",          DescribeWithExtraBytes},
    {SubtypeFromWaveTag(0x0130), "A_REAL/",          DescribeWithExtraBytes},
    {SubtypeFromWaveTag(0x0270), "A_REAL/",          DescribeWithExtraBytes},
    {mediasubtype::kMuLaw,       "A_MS/ACM",         DescribeWithWholeBlock},
};
// clang-format on

const AudioRow* FindRow(const GUID& subtype) {
    for (const AudioRow& row : kRows) {
        if (subtype == row.subtype) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

CodecDescription DescribeAudioCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription unsupported;
    unsupported.lacing = true;
    const AudioRow* const row = type.majortype == MEDIATYPE_Audio ? FindRow(type.subtype) : nullptr;
    CodecDescription description = unsupported;
    if (row == nullptr || !row->describe(FormatBlock(type), description)) {
        return unsupported;
    }
    description.codecId = row->codecId;
    return description;
}

} // namespace media

#include "mkvmux/splitter_check.h"

#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>

#include "dshow/ref_time.h"
#include "media/format_block.h"
#include "mkvmux/media_type_facts.h"
#include "mkvmux/media_type_text.h"

namespace mkvmux {

namespace {

// What sound of a wave tag looks like in a file of its own.
ContentKind KindOfTag(WORD tag) {
    switch (tag) {
    case WAVE_FORMAT_MPEG:
    case WAVE_FORMAT_MPEGLAYER3:
        return ContentKind::MpegAudio;
    case 0x00ff: // AAC, in its four tags
    case 0x1600:
    case 0x1610:
    case 0x706d:
        return ContentKind::Adts;
    case 0xf1ac:
        return ContentKind::Flac;
    default:
        return ContentKind::Unknown;
    }
}

const char* NameOfSound(ContentKind kind) {
    switch (kind) {
    case ContentKind::Adts:
        return "AAC in ADTS frames";
    case ContentKind::MpegAudio:
        return "MPEG audio";
    case ContentKind::Flac:
        return "FLAC";
    default:
        return nullptr;
    }
}

std::optional<WAVEFORMATEX> WaveOf(const AM_MEDIA_TYPE& type) {
    const bool isWave = type.majortype == MEDIATYPE_Audio && type.formattype == FORMAT_WaveFormatEx;
    return isWave ? media::FormatBlock(type).Read<WAVEFORMATEX>() : std::nullopt;
}

struct ByteRates {
    double least; // bytes a second
    double most;
};

std::optional<ByteRates> RatesOf(const WAVEFORMATEX& wave) {
    constexpr ByteRates kMpegAudio{1000, 56000}; // 8 and 448 kbit/s
    if (KindOfTag(wave.wFormatTag) == ContentKind::MpegAudio) {
        return kMpegAudio;
    }
    const bool isPlain = wave.wFormatTag == WAVE_FORMAT_PCM || wave.wFormatTag == WAVE_FORMAT_IEEE_FLOAT;
    const double rate = static_cast<double>(wave.nSamplesPerSec) * wave.nBlockAlign;
    return isPlain && rate > 0 ? std::optional(ByteRates{rate, rate}) : std::nullopt;
}

} // namespace

std::string ContradictionOf(ContentKind content, std::span<const SourceStream> streams) {
    const char* const name = NameOfSound(content);
    for (const SourceStream& stream : streams) {
        const auto wave = WaveOf(stream.type);
        const ContentKind offered = wave ? KindOfTag(wave->wFormatTag) : ContentKind::Unknown;
        if (name != nullptr && offered != ContentKind::Unknown && offered != content) {
            return std::string("holds ") + name + ", which the system's splitter takes for " +
                   DescribeMediaType(stream.type);
        }
    }
    return {};
}

std::string DoubtOf(const AM_MEDIA_TYPE& sound, REFERENCE_TIME duration, UINT64 fileBytes) {
    constexpr double kTolerance = 2;
    constexpr double kSlackBytes = 1 << 20; // heads and tags with a picture
    const auto wave = WaveOf(sound);
    const auto rates = wave ? RatesOf(*wave) : std::nullopt;
    const double size = static_cast<double>(fileBytes);
    const double seconds = static_cast<double>(duration) / double{kReferenceTimesPerSecond};
    if (!rates || duration <= 0 ||
        (size <= kTolerance * seconds * rates->most + kSlackBytes &&
         seconds * rates->least <= kTolerance * size + kSlackBytes)) {
        return {};
    }
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(),
                  "the system's splitter finds %.2f s of sound in %llu bytes: a part may be lost", seconds,
                  static_cast<unsigned long long>(fileBytes));
    return text.data();
}

std::string DurationDoubtOf(std::span<const SourceStream> streams, const std::wstring& path) {
    std::error_code error;
    const UINT64 size = std::filesystem::file_size(path, error);
    return error || streams.size() != 1 ? std::string() : DoubtOf(streams[0].type, streams[0].Duration(), size);
}

} // namespace mkvmux

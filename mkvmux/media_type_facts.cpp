#include "mkvmux/media_type_facts.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "dshow/media_subtypes.h"
#include "dshow/ref_time.h"
#include "media/format_block.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

constexpr size_t kGuidTextChars = 39; // braces and the final zero included

std::string GuidText(const GUID& guid) {
    std::array<WCHAR, kGuidTextChars> buffer{};
    StringFromGUID2(guid, buffer.data(), static_cast<int>(buffer.size()));
    return Utf8FromWide(buffer.data());
}

// 'cvid', a wave tag, or the identifier itself.
std::string SubtypeText(const GUID& subtype) {
    if (subtype != SubtypeFromFourCC(subtype.Data1)) {
        return GuidText(subtype);
    }
    if (subtype.Data1 <= 0xffff) {
        std::array<char, sizeof("wave tag 0x0000")> text{};
        std::snprintf(text.data(), text.size(), "wave tag 0x%04X", static_cast<unsigned>(subtype.Data1 & 0xffff));
        return text.data();
    }
    std::array<char, sizeof(DWORD)> letters{};
    std::memcpy(letters.data(), &subtype.Data1, letters.size());
    for (char& letter : letters) {
        letter = std::isprint(static_cast<unsigned char>(letter)) != 0 ? letter : '?';
    }
    return "'" + std::string(letters.data(), letters.size()) + "'";
}

PictureFacts PictureOf(const BITMAPINFOHEADER& bitmap, REFERENCE_TIME frameDuration) {
    const double rate = frameDuration > 0 ? double{kReferenceTimesPerSecond} / static_cast<double>(frameDuration) : 0;
    return {static_cast<long>(bitmap.biWidth), static_cast<long>(bitmap.biHeight), rate};
}

std::optional<PictureFacts> PictureFactsOf(const AM_MEDIA_TYPE& type) {
    // The MPEG format blocks begin with the plain ones.
    if (type.formattype == FORMAT_VideoInfo || type.formattype == FORMAT_MPEGVideo) {
        if (const auto info = media::FormatBlock(type).Read<VIDEOINFOHEADER>()) {
            return PictureOf(info->bmiHeader, info->AvgTimePerFrame);
        }
    }
    if (type.formattype == FORMAT_VideoInfo2 || type.formattype == FORMAT_MPEG2Video) {
        if (const auto info = media::FormatBlock(type).Read<VIDEOINFOHEADER2>()) {
            return PictureOf(info->bmiHeader, info->AvgTimePerFrame);
        }
    }
    return {};
}

std::optional<SoundFacts> SoundFactsOf(const AM_MEDIA_TYPE& type) {
    const auto wave =
        type.formattype == FORMAT_WaveFormatEx ? media::FormatBlock(type).Read<WAVEFORMATEX>() : std::nullopt;
    if (!wave) {
        return {};
    }
    return SoundFacts{static_cast<unsigned long>(wave->nSamplesPerSec), wave->nChannels, wave->wBitsPerSample};
}

} // namespace

MediaTypeFacts FactsOf(const AM_MEDIA_TYPE& type) {
    const std::string subtype = SubtypeText(type.subtype);
    if (type.majortype == MEDIATYPE_Video) {
        return {"video", subtype, PictureFactsOf(type), {}};
    }
    if (type.majortype == MEDIATYPE_Audio) {
        return {"audio", subtype, {}, SoundFactsOf(type)};
    }
    if (type.majortype == MEDIATYPE_Text) {
        return {"text", subtype, {}, {}};
    }
    if (type.majortype == mediatype::kSubtitle) {
        return {"subtitle", subtype, {}, {}};
    }
    return {GuidText(type.majortype), subtype, {}, {}};
}

} // namespace mkvmux

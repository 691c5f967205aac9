#include "tools/mkvmux/media_type_text.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <optional>

#include "dshow/media_subtypes.h"
#include "tools/mkvmux/text.h"

namespace mkvmux {

namespace {

constexpr double kReferenceTimesPerSecond = 1e7;
constexpr size_t kGuidTextChars = 39; // braces and the final zero included
constexpr size_t kMaxTextChars = 96;

template <typename... Arguments>
std::string Format(const char* format, Arguments... arguments) {
    std::array<char, kMaxTextChars> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, arguments...);
    return buffer.data();
}

std::string GuidText(const GUID& guid) {
    std::array<WCHAR, kGuidTextChars> buffer{};
    StringFromGUID2(guid, buffer.data(), static_cast<int>(buffer.size()));
    return Utf8FromWide(buffer.data());
}

// A copy, since the format block need not be aligned; none when the block is shorter than the structure.
template <typename Format>
std::optional<Format> FormatOf(const AM_MEDIA_TYPE& type) {
    if (type.pbFormat == nullptr || type.cbFormat < sizeof(Format)) {
        return {};
    }
    Format format;
    std::memcpy(&format, type.pbFormat, sizeof(format));
    return format;
}

// 'cvid', a wave tag, or the identifier itself.
std::string SubtypeText(const GUID& subtype) {
    if (subtype != SubtypeFromFourCC(subtype.Data1)) {
        return GuidText(subtype);
    }
    if (subtype.Data1 <= 0xffff) {
        return Format("wave tag 0x%04lX", static_cast<unsigned long>(subtype.Data1));
    }
    std::array<char, sizeof(DWORD)> letters{};
    std::memcpy(letters.data(), &subtype.Data1, letters.size());
    for (char& letter : letters) {
        letter = std::isprint(static_cast<unsigned char>(letter)) != 0 ? letter : '?';
    }
    return "'" + std::string(letters.data(), letters.size()) + "'";
}

std::string PictureText(const BITMAPINFOHEADER& bitmap, REFERENCE_TIME frameDuration) {
    std::string text = Format(", %ldx%ld", static_cast<long>(bitmap.biWidth), static_cast<long>(bitmap.biHeight));
    if (frameDuration > 0) {
        text += Format(", %.3g fps", kReferenceTimesPerSecond / static_cast<double>(frameDuration));
    }
    return text;
}

std::string VideoDetails(const AM_MEDIA_TYPE& type) {
    // The MPEG format blocks begin with the plain ones.
    if (type.formattype == FORMAT_VideoInfo || type.formattype == FORMAT_MPEGVideo) {
        if (const auto info = FormatOf<VIDEOINFOHEADER>(type)) {
            return PictureText(info->bmiHeader, info->AvgTimePerFrame);
        }
    }
    if (type.formattype == FORMAT_VideoInfo2 || type.formattype == FORMAT_MPEG2Video) {
        if (const auto info = FormatOf<VIDEOINFOHEADER2>(type)) {
            return PictureText(info->bmiHeader, info->AvgTimePerFrame);
        }
    }
    return {};
}

std::string AudioDetails(const AM_MEDIA_TYPE& type) {
    const auto wave = type.formattype == FORMAT_WaveFormatEx ? FormatOf<WAVEFORMATEX>(type) : std::nullopt;
    if (!wave) {
        return {};
    }
    std::string text = Format(", %lu Hz, %u channel%s", static_cast<unsigned long>(wave->nSamplesPerSec),
                              static_cast<unsigned>(wave->nChannels), wave->nChannels == 1 ? "" : "s");
    return wave->wBitsPerSample == 0 ? text : text + Format(", %u bits", static_cast<unsigned>(wave->wBitsPerSample));
}

} // namespace

std::string DescribeMediaType(const AM_MEDIA_TYPE& type) {
    const std::string subtype = SubtypeText(type.subtype);
    if (type.majortype == MEDIATYPE_Video) {
        return "video " + subtype + VideoDetails(type);
    }
    if (type.majortype == MEDIATYPE_Audio) {
        return "audio " + subtype + AudioDetails(type);
    }
    if (type.majortype == MEDIATYPE_Text) {
        return "text " + subtype;
    }
    if (type.majortype == mediatype::kSubtitle) {
        return "subtitle " + subtype;
    }
    return GuidText(type.majortype) + " " + subtype;
}

} // namespace mkvmux

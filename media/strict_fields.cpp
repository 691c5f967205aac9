#include "media/strict_fields.h"

#include <cstdint>
#include <string_view>

#include "dshow/ref_time.h"
#include "media/format_block.h"
#include "media/interlacing.h"

namespace media {

namespace {

constexpr REFERENCE_TIME kUnitsASecond = 10'000'000;
constexpr REFERENCE_TIME kMaxFrameDuration = REFERENCE_TIME{1000} * 3600 * kUnitsASecond; // longer ones are damage
constexpr INT64 kNsASecond = kUnitsASecond * kNsPerReferenceTime;
constexpr INT64 kMaxExactRate = 240;

// Codecs whose samples have a depth, or whose encoders tell the source's.
constexpr std::string_view kCodecsWithDepth[] = {"A_PCM/INT/LIT", "A_PCM/INT/BIG", "A_PCM/FLOAT/IEEE",
                                                 "A_ALAC",        "A_FLAC",        "A_TTA1",
                                                 "A_WAVPACK4",    "A_DTS",         "A_MS/ACM"};
constexpr std::string_view kRealPrefix = "A_REAL/";

// The duration of this rate, when the units are what is left of it, cut or rounded.
std::optional<UINT64> ExactDurationNs(REFERENCE_TIME units, INT64 numerator, INT64 denominator) {
    const INT64 ns = (numerator * 2 + denominator) / (2 * denominator);
    const INT64 cut = numerator / denominator / kNsPerReferenceTime;
    const INT64 rounded = (ns + kNsPerReferenceTime / 2) / kNsPerReferenceTime;
    return units == cut || units == rounded ? std::optional(static_cast<UINT64>(ns)) : std::nullopt;
}

UINT64 SizeOf(LONG size) {
    return static_cast<UINT64>(size < 0 ? -static_cast<INT64>(size) : static_cast<INT64>(size));
}

UINT64 RoundedQuotient(UINT64 dividend, UINT64 divisor) {
    return (dividend + divisor / 2) / divisor;
}

struct PictureHead {
    BITMAPINFOHEADER bitmap{};
    REFERENCE_TIME frameDuration = 0;
    DisplaySize aspect;
    DWORD interlaceFlags = 0;
};

std::optional<PictureHead> ReadPictureHead(const AM_MEDIA_TYPE& type) {
    const FormatBlock block(type);
    if (type.formattype == FORMAT_VideoInfo2 || type.formattype == FORMAT_MPEG2Video) {
        const auto header = block.Read<VIDEOINFOHEADER2>();
        return header ? std::optional(PictureHead{header->bmiHeader,
                                                  header->AvgTimePerFrame,
                                                  {header->dwPictAspectRatioX, header->dwPictAspectRatioY},
                                                  header->dwInterlaceFlags})
                      : std::nullopt;
    }
    const auto header = block.Read<VIDEOINFOHEADER>();
    return header ? std::optional(PictureHead{header->bmiHeader, header->AvgTimePerFrame, {}, 0}) : std::nullopt;
}

bool HasDepth(std::string_view codecId) {
    if (codecId.starts_with(kRealPrefix)) {
        return true;
    }
    for (const std::string_view codec : kCodecsWithDepth) {
        if (codecId == codec) {
            return true;
        }
    }
    return false;
}

} // namespace

std::optional<UINT64> FrameDurationNs(REFERENCE_TIME frameDuration) {
    if (frameDuration <= 0 || frameDuration > kMaxFrameDuration) {
        return std::nullopt;
    }
    for (INT64 rate = 1; rate <= kMaxExactRate; ++rate) {
        for (const INT64 ns : {kNsASecond, kNsASecond / 1000 * 1001}) {
            if (const auto exact = ExactDurationNs(frameDuration, ns, rate)) {
                return exact;
            }
        }
    }
    return static_cast<UINT64>(frameDuration * kNsPerReferenceTime);
}

std::optional<DisplaySize> DisplayInPixels(const DisplaySize& pixels, const DisplaySize& aspect) {
    const UINT64 wide = pixels.height * aspect.width;
    const UINT64 high = pixels.width * aspect.height;
    if (wide == 0 || high == 0) {
        return std::nullopt;
    }
    // The one of the two that is stretched; the other one keeps its pixels.
    const DisplaySize display = wide > high ? DisplaySize{RoundedQuotient(wide, aspect.height), pixels.height}
                                            : DisplaySize{pixels.width, RoundedQuotient(high, aspect.width)};
    const bool isSane = display.width <= INT32_MAX && display.height <= INT32_MAX;
    const bool isSquare = display.width == pixels.width && display.height == pixels.height;
    return isSane && !isSquare ? std::optional(display) : std::nullopt;
}

bool RefinePicture(const AM_MEDIA_TYPE& type, CodecDescription& description) {
    const std::optional<PictureHead> head = ReadPictureHead(type);
    if (!head || head->bitmap.biWidth == 0 || head->bitmap.biHeight == 0) {
        return false;
    }
    const DisplaySize pixels{SizeOf(head->bitmap.biWidth), SizeOf(head->bitmap.biHeight)};
    description.defaultDurationNs = FrameDurationNs(head->frameDuration);
    description.video->pixelWidth = pixels.width;
    description.video->pixelHeight = pixels.height;
    description.video->display = DisplayInPixels(pixels, head->aspect);
    DescribeFields(head->interlaceFlags, *description.video);
    return true;
}

bool RefineSound(CodecDescription& description) {
    AudioDescription& audio = *description.audio;
    if (!HasDepth(description.codecId) || audio.bitDepth == 0U) {
        audio.bitDepth.reset();
    }
    return audio.samplingFrequencyHz != 0 && audio.channels != 0;
}

} // namespace media

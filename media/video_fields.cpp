#include "media/video_fields.h"

#include <algorithm>
#include <cstdint>

#include "dshow/ref_time.h"
#include "media/colour_flags.h"
#include "media/interlacing.h"

namespace media {

namespace {

constexpr UINT64 kMaxFrameDurationNs = UINT64{1000} * 3600 * 1'000'000'000; // longer ones are damage

UINT64 AsStored(INT64 value) {
    return static_cast<UINT64>(value);
}

LONG ClampedSize(UINT64 size) {
    return static_cast<LONG>(std::min<UINT64>(size, INT32_MAX));
}

// The size that is shown: the one that is said, else what is left of the pixels.
DWORD ShownSize(UINT64 display, UINT64 pixels, UINT64 cropped) {
    const UINT64 visible = pixels > cropped ? pixels - cropped : pixels;
    return static_cast<DWORD>(ClampedSize(display != 0 ? display : visible));
}

} // namespace

void DescribePixels(REFERENCE_TIME frameDuration, const BITMAPINFOHEADER& bitmap, CodecDescription& description) {
    description.defaultDurationNs = AsStored(frameDuration) * AsStored(kNsPerReferenceTime);
    description.video =
        VideoDescription{.pixelWidth = AsStored(bitmap.biWidth), .pixelHeight = AsStored(bitmap.biHeight)};
}

void DescribePicture(const VIDEOINFOHEADER& header, CodecDescription& description) {
    DescribePixels(header.AvgTimePerFrame, header.bmiHeader, description);
    description.video->display = DisplaySize{description.video->pixelWidth, description.video->pixelHeight};
}

void DescribePicture(const VIDEOINFOHEADER2& header, CodecDescription& description) {
    DescribePixels(header.AvgTimePerFrame, header.bmiHeader, description);
    description.video->display = DisplaySize{header.dwPictAspectRatioX, header.dwPictAspectRatioY};
}

Picture PictureOf(const TrackFacts& track) {
    const VideoFacts& video = track.video;
    Picture picture;
    picture.width = ClampedSize(video.pixelWidth);
    picture.height = ClampedSize(video.pixelHeight);
    picture.aspectX = ShownSize(video.displayWidth, video.pixelWidth, video.cropWidth);
    picture.aspectY = ShownSize(video.displayHeight, video.pixelHeight, video.cropHeight);
    picture.interlaceFlags = InterlaceFlagsOf(video);
    picture.controlFlags = FlagsOfColour(video.colour);
    if (track.defaultDurationNs <= kMaxFrameDurationNs) {
        picture.frameDuration =
            (static_cast<INT64>(track.defaultDurationNs) + kNsPerReferenceTime / 2) / kNsPerReferenceTime;
    }
    return picture;
}

} // namespace media

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "codecs/avc_configuration.h"
#include "codecs/unit_lengths.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "sources/matroska/frame_times.h"
#include "sources/matroska/media_types_of.h"

namespace matroska {

namespace {

using media::Picture;

constexpr UINT64 kMaxFrameDurationNs = UINT64{1000} * 3600 * 1'000'000'000; // longer ones are damage

LONG ClampedSize(UINT64 size) {
    return static_cast<LONG>(std::min<UINT64>(size, INT32_MAX));
}

// The display size itself stands for the picture's shape, so that it is written back unchanged.
Picture PictureOf(const Track& track) {
    const VideoTrack& video = track.video;
    const auto visible = [](UINT64 size, UINT64 cropped) { return size > cropped ? size - cropped : size; };
    Picture picture;
    picture.width = ClampedSize(video.pixelWidth);
    picture.height = ClampedSize(video.pixelHeight);
    picture.aspectX = static_cast<DWORD>(
        ClampedSize(video.displayWidth != 0 ? video.displayWidth : visible(video.pixelWidth, video.cropWidth)));
    picture.aspectY = static_cast<DWORD>(
        ClampedSize(video.displayHeight != 0 ? video.displayHeight : visible(video.pixelHeight, video.cropHeight)));
    if (track.defaultDurationNs <= kMaxFrameDurationNs) {
        picture.frameDuration =
            (static_cast<INT64>(track.defaultDurationNs) + kNsInReferenceTime / 2) / kNsInReferenceTime;
    }
    return picture;
}

CMediaType AvcType(const Track& track, const Picture& picture) {
    const codecs::AvcConfiguration avc = codecs::ParseAvcConfiguration(track.codecPrivate);
    return media::Mpeg2VideoType(mediasubtype::kAvc1, picture, avc.parameterSets,
                                  {avc.profile, avc.level, codecs::kSampleLengthSizeBytes});
}

// The codec private data is a BITMAPINFOHEADER and what belongs to it. The plain format block loses the latter, and a
// display size of its own; the other one belongs to VP9 when the subtype is its.
std::vector<CMediaType> VfwTypes(const Track& track, const Picture& picture) {
    BITMAPINFOHEADER bitmap;
    if (track.codecPrivate.size() < sizeof(bitmap)) {
        return {};
    }
    std::memcpy(&bitmap, track.codecPrivate.data(), sizeof(bitmap));
    const media::ByteView extra = media::ByteView(track.codecPrivate).subspan(sizeof(bitmap));
    const GUID subtype = media::SubtypeOf(bitmap);
    const bool isPlain = extra.empty() && picture.aspectX == static_cast<DWORD>(picture.width) &&
                         picture.aspectY == static_cast<DWORD>(picture.height);
    std::vector<CMediaType> types;
    if (subtype != mediasubtype::kVp8) {
        types.push_back(media::VideoInfoType(subtype, picture, bitmap, extra));
    }
    if (subtype != mediasubtype::kVp9) {
        types.push_back(media::VideoInfo2Type(subtype, picture, bitmap, extra));
    }
    if (!isPlain) {
        std::reverse(types.begin(), types.end());
    }
    return types;
}

} // namespace

std::vector<CMediaType> VideoTypesOf(const Track& track) {
    const Picture picture = PictureOf(track);
    const std::string& id = track.codecId;
    const auto mpeg2 = [&](const GUID& subtype) {
        return std::vector{media::Mpeg2VideoType(subtype, picture, track.codecPrivate)};
    };
    const auto bitmap = [&](const GUID& subtype) { return media::BitmapHeader(picture, subtype.Data1); };
    if (id == "V_MPEG1") {
        return {media::Mpeg1VideoType(picture, track.codecPrivate)};
    }
    if (id == "V_THEORA") {
        return mpeg2(mediasubtype::kTheora);
    }
    if (id == "V_MPEG2") {
        return mpeg2(MEDIASUBTYPE_MPEG2_VIDEO);
    }
    if (id == "V_MPEG4/ISO/ASP") {
        return mpeg2(mediasubtype::kMp4v);
    }
    if (id == "V_MPEG4/ISO/AVC") {
        return {AvcType(track, picture)};
    }
    if (id == "V_MPEGH/ISO/HEVC") {
        return mpeg2(mediasubtype::kHvc1);
    }
    if (id == "V_VP8") {
        return {media::VideoInfoType(mediasubtype::kVp8, picture, bitmap(mediasubtype::kVp8), {})};
    }
    if (id == "V_VP9") {
        return {media::VideoInfo2Type(mediasubtype::kVp9, picture, bitmap(mediasubtype::kVp9), track.codecPrivate)};
    }
    return id == "V_MS/VFW/FOURCC" ? VfwTypes(track, picture) : std::vector<CMediaType>();
}

} // namespace matroska

#include "media/strict_codec_table.h"

#include <algorithm>

#include "dshow/media_subtypes.h"
#include "media/picture_layouts.h"

namespace media {

namespace {

using enum Acceptance;

constexpr const GUID* kVideo = &MEDIATYPE_Video;

// clang-format off
constexpr CodecRow kRows[] = {
    // What the codec table knows in one of the two plain blocks only: samples are the same in both.
    {kVideo, &mediasubtype::kVp8,  &FORMAT_VideoInfo2, AsMapped, "V_VP8",  &kPictureLayout},
    {kVideo, &mediasubtype::kVp9,  &FORMAT_VideoInfo,  AsMapped, "V_VP9",  &kPictureLayout},

    {kVideo, &mediasubtype::kFfv1, &FORMAT_VideoInfo2, AsMapped, "V_FFV1", &kExtraPicture2Layout},
    {kVideo, &mediasubtype::kFfv1, &FORMAT_VideoInfo,  AsMapped, "V_FFV1", &kExtraPictureLayout},
    {kVideo, &mediasubtype::kAv01, &FORMAT_VideoInfo2, AsMapped, "V_AV1",  &kExtraPicture2Layout},
    {kVideo, &mediasubtype::kAv01, &FORMAT_VideoInfo,  AsMapped, "V_AV1",  &kExtraPictureLayout},
};
// clang-format on

} // namespace

std::span<const CodecRow> StrictCodecTable() {
    return kRows;
}

const CodecRow* FindStrictCodecRow(const AM_MEDIA_TYPE& type) {
    const auto found = std::ranges::find_if(kRows, [&type](const CodecRow& row) { return row.Matches(type); });
    return found == std::end(kRows) ? FindCodecRow(type) : found;
}

} // namespace media

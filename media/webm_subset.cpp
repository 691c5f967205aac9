#include "media/webm_subset.h"

#include <algorithm>
#include <array>

namespace media {

namespace {

constexpr std::array<std::string_view, 9> kCodecIds{
    "V_VP8",
    "V_VP9",
    "V_AV1",
    "A_VORBIS",
    "A_OPUS",
    "D_WEBVTT/SUBTITLES",
    "D_WEBVTT/CAPTIONS",
    "D_WEBVTT/DESCRIPTIONS",
    "D_WEBVTT/METADATA",
};

} // namespace

bool IsInWebmSubset(std::string_view codecId) {
    return std::find(kCodecIds.begin(), kCodecIds.end(), codecId) != kCodecIds.end();
}

} // namespace media

#include "media/strict_codec_table.h"

#include <algorithm>
#include <array>

#include "dshow/media_subtypes.h"
#include "media/picture_layouts.h"
#include "media/subtitle_layouts.h"
#include "media/uncompressed_kinds.h"
#include "media/wave_layouts.h"

namespace media {

namespace {

using enum Acceptance;

constexpr const GUID* kVideo = &MEDIATYPE_Video;
constexpr const GUID* kAudio = &MEDIATYPE_Audio;
constexpr const GUID* kSubtitle = &mediatype::kSubtitle;

// clang-format off
constexpr std::array kRows = std::to_array<CodecRow>({
    // ---- Video. What the codec table knows in one of the two plain blocks only: samples are the same in both. ----
    {kVideo, &mediasubtype::kVp8,  &FORMAT_VideoInfo2, AsMapped, "V_VP8",  &kPictureLayout},
    {kVideo, &mediasubtype::kVp9,  &FORMAT_VideoInfo,  AsMapped, "V_VP9",  &kPictureLayout},
    {kVideo, &mediasubtype::kFfv1, &FORMAT_VideoInfo2, AsMapped, "V_FFV1", &kExtraPicture2Layout},
    {kVideo, &mediasubtype::kFfv1, &FORMAT_VideoInfo,  AsMapped, "V_FFV1", &kExtraPictureLayout},
    {kVideo, &mediasubtype::kAv01, &FORMAT_VideoInfo2, AsMapped, "V_AV1",  &kExtraPicture2Layout},
    {kVideo, &mediasubtype::kAv01, &FORMAT_VideoInfo,  AsMapped, "V_AV1",  &kExtraPictureLayout},

    // ---- Audio ----
    {kAudio, &mediasubtype::kIn24,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {kAudio, &mediasubtype::kIn32,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {kAudio, &mediasubtype::kTwos,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {kAudio, &mediasubtype::kAlacWaveTag, nullptr, AsMapped, "A_ALAC",        &kExtraWaveLayout},
    {kAudio, &mediasubtype::kAlac,        nullptr, AsMapped, "A_ALAC",        &kExtraWaveLayout},

    // ---- Subtitles ----
    {kSubtitle, &mediasubtype::kWebVttBoxes, nullptr, AsMapped, "S_TEXT/WEBVTT", &kSubtitleInfoLayout},
    {kSubtitle, &mediasubtype::kWebVtt,      nullptr, AsMapped, "S_TEXT/WEBVTT", &kOneWaySubtitleLayout},
    {kSubtitle, &mediasubtype::kDvbSubtitle, nullptr, AsMapped, "S_DVBSUB",      &kSubtitleInfoLayout},
});
// clang-format on

constexpr std::array kProResSubtypes = {
    SubtypeFromFourCC('a', 'p', 'c', 'o'), SubtypeFromFourCC('a', 'p', 'c', 's'), SubtypeFromFourCC('a', 'p', 'c', 'n'),
    SubtypeFromFourCC('a', 'p', 'c', 'h'), SubtypeFromFourCC('a', 'p', '4', 'h'), SubtypeFromFourCC('a', 'p', '4', 'x'),
};

// Two of each, for both blocks; tracks come back in the larger one.
constexpr size_t kBlocks = 2;
constexpr size_t kAllRows = kRows.size() + kBlocks * (kProResSubtypes.size() + std::size(kUncompressedKinds));

constexpr std::array<CodecRow, kAllRows> MakeRows() {
    std::array<CodecRow, kAllRows> rows{};
    auto next = std::copy(kRows.begin(), kRows.end(), rows.begin());
    for (const GUID& subtype : kProResSubtypes) {
        *next++ = {kVideo, &subtype, &FORMAT_VideoInfo2, AsMapped, "V_PRORES", &kProResLayout};
        *next++ = {kVideo, &subtype, &FORMAT_VideoInfo, AsMapped, "V_PRORES", &kPictureLayout};
    }
    for (const UncompressedKind& kind : kUncompressedKinds) {
        *next++ = {kVideo, &kind.subtype, &FORMAT_VideoInfo2, AsMapped, "V_UNCOMPRESSED", &kUncompressedLayout};
        *next++ = {kVideo, &kind.subtype, &FORMAT_VideoInfo, AsMapped, "V_UNCOMPRESSED", &kPictureLayout};
    }
    return rows;
}

constexpr std::array<CodecRow, kAllRows> kTable = MakeRows();

} // namespace

std::span<const CodecRow> StrictCodecTable() {
    return kTable;
}

const CodecRow* FindStrictCodecRow(const AM_MEDIA_TYPE& type) {
    const auto found = std::ranges::find_if(kTable, [&type](const CodecRow& row) { return row.Matches(type); });
    return found == kTable.end() ? FindCodecRow(type) : &*found;
}

} // namespace media

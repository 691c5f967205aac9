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

// clang-format off
constexpr std::array kSingleRows = std::to_array<CodecRow>({
    // ---- Video. What the codec table knows in one of the two plain blocks only: samples are the same in both. ----
    {&MEDIATYPE_Video, &mediasubtype::kVp8,  &FORMAT_VideoInfo2, AsMapped, "V_VP8",  &kPictureLayout},
    {&MEDIATYPE_Video, &mediasubtype::kVp9,  &FORMAT_VideoInfo,  AsMapped, "V_VP9",  &kPictureLayout},
    {&MEDIATYPE_Video, &mediasubtype::kFfv1, &FORMAT_VideoInfo2, AsMapped, "V_FFV1", &kExtraPicture2Layout},
    {&MEDIATYPE_Video, &mediasubtype::kFfv1, &FORMAT_VideoInfo,  AsMapped, "V_FFV1", &kExtraPictureLayout},
    {&MEDIATYPE_Video, &mediasubtype::kAv01, &FORMAT_VideoInfo2, AsMapped, "V_AV1",  &kExtraPicture2Layout},
    {&MEDIATYPE_Video, &mediasubtype::kAv01, &FORMAT_VideoInfo,  AsMapped, "V_AV1",  &kExtraPictureLayout},

    // ---- Audio ----
    {&MEDIATYPE_Audio, &mediasubtype::kIn24,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {&MEDIATYPE_Audio, &mediasubtype::kIn32,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {&MEDIATYPE_Audio, &mediasubtype::kTwos,        nullptr, AsMapped, "A_PCM/INT/BIG", &kBigEndianLayout},
    {&MEDIATYPE_Audio, &mediasubtype::kAlacWaveTag, nullptr, AsMapped, "A_ALAC",        &kExtraWaveLayout},
    {&MEDIATYPE_Audio, &mediasubtype::kAlac,        nullptr, AsMapped, "A_ALAC",        &kExtraWaveLayout},

    // ---- Subtitles ----
    {&mediatype::kSubtitle, &mediasubtype::kWebVttBoxes, nullptr, AsMapped, "S_TEXT/WEBVTT", &kSubtitleInfoLayout},
    {&mediatype::kSubtitle, &mediasubtype::kWebVtt,      nullptr, AsMapped, "S_TEXT/WEBVTT", &kOneWaySubtitleLayout},
    {&mediatype::kSubtitle, &mediasubtype::kDvbSubtitle, nullptr, AsMapped, "S_DVBSUB",      &kSubtitleInfoLayout},
});
// clang-format on

constexpr std::array kProResSubtypes = {
    SubtypeFromFourCC('a', 'p', 'c', 'o'), SubtypeFromFourCC('a', 'p', 'c', 's'), SubtypeFromFourCC('a', 'p', 'c', 'n'),
    SubtypeFromFourCC('a', 'p', 'c', 'h'), SubtypeFromFourCC('a', 'p', '4', 'h'), SubtypeFromFourCC('a', 'p', '4', 'x'),
};

// Two of each, for both blocks; tracks come back in the larger one.
constexpr size_t kBlocks = 2;
constexpr size_t kAllRows = kSingleRows.size() + kBlocks * (kProResSubtypes.size() + std::size(kUncompressedKinds));

constexpr std::array<CodecRow, kAllRows> MakeRows() {
    std::array<CodecRow, kAllRows> rows{};
    auto next = std::copy(kSingleRows.begin(), kSingleRows.end(), rows.begin());
    for (const GUID& subtype : kProResSubtypes) {
        *next++ = {&MEDIATYPE_Video, &subtype, &FORMAT_VideoInfo2, AsMapped, "V_PRORES", &kProResLayout};
        *next++ = {&MEDIATYPE_Video, &subtype, &FORMAT_VideoInfo, AsMapped, "V_PRORES", &kPictureLayout};
    }
    for (const UncompressedKind& kind : kUncompressedKinds) {
        *next++ = {&MEDIATYPE_Video, &kind.subtype,    &FORMAT_VideoInfo2,
                   AsMapped,         "V_UNCOMPRESSED", &kUncompressedLayout};
        *next++ = {&MEDIATYPE_Video, &kind.subtype, &FORMAT_VideoInfo, AsMapped, "V_UNCOMPRESSED", &kPictureLayout};
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

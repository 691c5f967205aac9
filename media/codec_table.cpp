#include "media/codec_table.h"

#include "dshow/media_subtypes.h"
#include "media/mpeg_video_layouts.h"
#include "media/subtitle_layouts.h"
#include "media/track_type.h"
#include "media/video_info_layouts.h"
#include "media/vorbis_layout.h"
#include "media/wave_layouts.h"

namespace media {

namespace {

using enum Acceptance;

constexpr const GUID* kVideo = &MEDIATYPE_Video;
constexpr const GUID* kAudio = &MEDIATYPE_Audio;
constexpr const GUID* kText = &MEDIATYPE_Text;
constexpr const GUID* kSubtitle = &mediatype::kSubtitle;

constexpr GUID kReal144 = SubtypeFromWaveTag(0x2002);
constexpr GUID kReal288 = SubtypeFromWaveTag(0x2003);
constexpr GUID kRealCook = SubtypeFromWaveTag(0x2004);
constexpr GUID kRealSipr = SubtypeFromWaveTag(0x0130);
constexpr GUID kRealAtrac = SubtypeFromWaveTag(0x0270);

// clang-format off
constexpr CodecRow kRows[] = {
    // ---- Video ----
    {kVideo, &MEDIASUBTYPE_MPEG1Payload, &FORMAT_MPEGVideo,  AsMapped,      "V_MPEG1",          &kMpeg1Layout},
    {kVideo, &mediasubtype::kTheora,     &FORMAT_MPEG2Video, WithAnyFormat, "V_THEORA",         &kMpeg2Layout},
    {kVideo, &MEDIASUBTYPE_MPEG2_VIDEO,  &FORMAT_MPEG2Video, AsMapped,      "V_MPEG2",          &kMpeg2Layout},
    {kVideo, &mediasubtype::kMp4v,       &FORMAT_MPEG2Video, WithAnyFormat, "V_MPEG4/ISO/ASP",  &kMpeg2Layout},
    {kVideo, &mediasubtype::kAvc1,       &FORMAT_MPEG2Video, WithAnyFormat, "V_MPEG4/ISO/AVC",  &kAvcLengthsLayout},
    {kVideo, &mediasubtype::kH264AnnexB, &FORMAT_MPEG2Video, WithAnyFormat, "V_MPEG4/ISO/AVC",  &kAvcByteStreamLayout},
    // The header of length-prefixed H.265 is a complete configuration record already.
    {kVideo, &mediasubtype::kHvc1,       &FORMAT_MPEG2Video, WithAnyFormat, "V_MPEGH/ISO/HEVC", &kMpeg2Layout},
    {kVideo, &mediasubtype::kHevcAnnexB, &FORMAT_MPEG2Video, WithAnyFormat, "V_MPEGH/ISO/HEVC", &kHevcByteStreamLayout},
    {kVideo, &mediasubtype::kVp8,        &FORMAT_VideoInfo,  AsMapped,      "V_VP8",            &kVp8Layout},
    {kVideo, &mediasubtype::kVp9,        &FORMAT_VideoInfo2, AsMapped,      "V_VP9",            &kVp9Layout},
    {kVideo, nullptr,                    &FORMAT_VideoInfo,  AsMapped,      "V_MS/VFW/FOURCC",  &kVfwLayout},
    {kVideo, nullptr,                    &FORMAT_VideoInfo2, AsMapped,      "V_MS/VFW/FOURCC",  &kVfw2Layout},

    // ---- Audio. Of two subtypes of a codec the first is what a track comes back as first. ----
    {kAudio, &mediasubtype::kDolbyAc3,    nullptr, AsMapped, "A_AC3",            &kPlainWaveLayout},
    {kAudio, &mediasubtype::kAc3WaveTag,  nullptr, AsMapped, "A_AC3",            &kPlainWaveLayout},
    {kAudio, &mediasubtype::kDolbyDdPlus, nullptr, AsMapped, "A_EAC3",           &kPlainWaveLayout},
    {kAudio, &mediasubtype::kDolbyTrueHd, nullptr, AsMapped, "A_TRUEHD",         &kPlainWaveLayout},
    {kAudio, &mediasubtype::kMp3,         nullptr, AsMapped, "A_MPEG/L3",        &kPlainWaveLayout},
    {kAudio, &mediasubtype::kMpeg1Audio,  nullptr, AsMapped, "A_MPEG/L2",        &kPlainWaveLayout},
    {kAudio, &mediasubtype::kDts,         nullptr, AsMapped, "A_DTS",            &kPlainWaveLayout},
    {kAudio, &mediasubtype::kDtsWaveTag,  nullptr, AsMapped, "A_DTS",            &kPlainWaveLayout},
    {kAudio, &mediasubtype::kPcm,         nullptr, AsMapped, "A_PCM/INT/LIT",    &kPlainWaveLayout},
    {kAudio, &mediasubtype::kIeeeFloat,   nullptr, AsMapped, "A_PCM/FLOAT/IEEE", &kPlainWaveLayout},
    {kAudio, &mediasubtype::kTta1,        nullptr, AsMapped, "A_TTA1",           &kExtraWaveLayout},
    {kAudio, &mediasubtype::kWavPack4,    nullptr, AsMapped, "A_WAVPACK4",       &kExtraWaveLayout},
    {kAudio, &mediasubtype::kOpus,        nullptr, AsMapped, "A_OPUS",           &kOpusLayout},
    {kAudio, &mediasubtype::kVorbis,      nullptr, AsMapped, "A_VORBIS",         &kVorbisLayout},
    {kAudio, &mediasubtype::kFlacFramed,  nullptr, AsMapped, "A_FLAC",           &kExtraWaveLayout},
    {kAudio, &mediasubtype::kRawAac,      nullptr, AsMapped, "A_AAC",            &kExtraWaveLayout},
    // Nothing after the slash, deliberately: readers of this writer's files know them so. The files of others name the
    // codec there; one that does not is taken for Cook.
    {kAudio, &kReal144,                   nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout, "A_REAL/14_4"},
    {kAudio, &kReal288,                   nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout, "A_REAL/28_8"},
    {kAudio, &kRealCook,                  nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout, "A_REAL/COOK"},
    {kAudio, &kRealCook,                  nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout},
    {kAudio, &kRealSipr,                  nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout, "A_REAL/SIPR"},
    {kAudio, &kRealAtrac,                 nullptr, Refused,  "A_REAL/",          &kExtraWaveLayout, "A_REAL/ATRC"},
    // A track of this codec holds any wave format and comes back as that; only this one becomes such a track.
    {kAudio, &mediasubtype::kMuLaw,       nullptr, AsMapped, "A_MS/ACM",         &kWholeWaveLayout},

    // ---- Text and subtitles ----
    {kText,     nullptr,                nullptr,                     AsMapped, "S_TEXT/ASCII", &kTextLayout},
    {kSubtitle, &mediasubtype::kUtf8,   nullptr,                     AsMapped, "S_TEXT/UTF8",  &kSubtitleInfoLayout},
    {kSubtitle, &mediasubtype::kSsa,    nullptr,                     AsMapped, "S_TEXT/SSA",   &kSubtitleInfoLayout},
    {kSubtitle, &mediasubtype::kAss,    nullptr,                     AsMapped, "S_TEXT/ASS",   &kSubtitleInfoLayout},
    {kSubtitle, &mediasubtype::kUsf,    nullptr,                     AsMapped, "S_TEXT/USF",   &kSubtitleInfoLayout},
    {kSubtitle, &mediasubtype::kVobSub, nullptr,                     AsMapped, "S_VOBSUB",     &kSubtitleInfoLayout},
    {kSubtitle, &GUID_NULL,             &mediaformat::kSubtitleInfo, AsMapped, "S_HDMV/PGS",   &kSubtitleInfoLayout},
};
// clang-format on

bool IsAnyOr(const GUID* wanted, const GUID& value) {
    return wanted == nullptr || *wanted == value;
}

} // namespace

bool CodecRow::Matches(const AM_MEDIA_TYPE& type) const {
    return *major == type.majortype && IsAnyOr(subtype, type.subtype) && IsAnyOr(format, type.formattype);
}

bool CodecRow::Accepts(const AM_MEDIA_TYPE& type) const {
    switch (acceptance) {
    case AsMapped:
        return Matches(type);
    case WithAnyFormat:
        return *major == type.majortype && IsAnyOr(subtype, type.subtype);
    case Refused:
    default:
        return false;
    }
}

bool CodecRow::ReadsFrom(const TrackFacts& track) const {
    return layout->typeOf != nullptr && static_cast<UINT64>(FindTrackType(*major)) == track.type &&
           track.codecId == (readFrom != nullptr ? readFrom : codecId);
}

std::span<const CodecRow> CodecTable() {
    return kRows;
}

const CodecRow* FindCodecRow(const AM_MEDIA_TYPE& type) {
    for (const CodecRow& row : kRows) {
        if (row.Matches(type)) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace media

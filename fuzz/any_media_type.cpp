#include "fuzz/any_media_type.h"

#include "dshow/media_subtypes.h"

namespace fuzz {

namespace {

const GUID kMajors[] = {MEDIATYPE_Video, MEDIATYPE_Audio, MEDIATYPE_Text, mediatype::kSubtitle};
const GUID kFormats[] = {FORMAT_VideoInfo,    FORMAT_VideoInfo2,          FORMAT_MPEGVideo,      FORMAT_MPEG2Video,
                         FORMAT_WaveFormatEx, mediaformat::kSubtitleInfo, mediaformat::kVorbis2, FORMAT_None};
const GUID kSubtypes[] = {
    mediasubtype::kAvc1,      mediasubtype::kH264AnnexB, mediasubtype::kHevcAnnexB,  mediasubtype::kHvc1,
    mediasubtype::kVp8,       mediasubtype::kVp9,        mediasubtype::kTheora,      mediasubtype::kMp4v,
    MEDIASUBTYPE_MPEG2_VIDEO, MEDIASUBTYPE_MPEG1Payload, mediasubtype::kDolbyAc3,    mediasubtype::kVorbis,
    mediasubtype::kRawAac,    mediasubtype::kPcm,        mediasubtype::kFlacFramed,  mediasubtype::kOpus,
    mediasubtype::kUtf8,      mediasubtype::kAss,        mediasubtype::kVobSub,      GUID_NULL,
    mediasubtype::kFfv1,      mediasubtype::kRgb24,      mediasubtype::kRgb32,       mediasubtype::kTwos,
    mediasubtype::kAlac,      mediasubtype::kWebVtt,     mediasubtype::kWebVttBoxes, mediasubtype::kDvbSubtitle};

template <size_t Count>
const GUID& Chosen(const GUID (&from)[Count], std::uint8_t by) {
    return from[by % Count];
}

} // namespace

CMediaType AnyMediaType(const std::uint8_t* data, size_t size) {
    CMediaType type(&Chosen(kMajors, data[0]));
    type.formattype = Chosen(kFormats, data[1]);
    type.subtype = Chosen(kSubtypes, data[2]);
    if (data[3] != 0) { // a FourCC or a wave tag
        type.subtype = SubtypeFromFourCC(static_cast<DWORD>(data[3] | data[4] << 8));
    }
    if (size > kChoiceBytes) {
        (void)type.SetFormat(data + kChoiceBytes, static_cast<ULONG>(size - kChoiceBytes));
    }
    return type;
}

} // namespace fuzz

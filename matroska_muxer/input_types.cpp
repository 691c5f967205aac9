#include "matroska_muxer/input_types.h"

#include <algorithm>
#include <iterator>

#include "dshow/media_subtypes.h"

namespace {

// A type matches a row when all that the row names is equal.
struct AcceptedType {
    const GUID* major;
    const GUID* subtype; // null: any
    const GUID* format;  // null: any
};

const AcceptedType kAcceptedTypes[] = {
    {&MEDIATYPE_Video, &mediasubtype::kAvc1, nullptr},
    {&MEDIATYPE_Video, &mediasubtype::kH264AnnexB, nullptr},
    {&MEDIATYPE_Video, &mediasubtype::kMp4v, nullptr},
    {&MEDIATYPE_Video, &mediasubtype::kHvc1, nullptr},
    {&MEDIATYPE_Video, &mediasubtype::kHevcAnnexB, nullptr},
    {&MEDIATYPE_Video, &MEDIASUBTYPE_MPEG1Payload, &FORMAT_MPEGVideo},
    {&MEDIATYPE_Video, &MEDIASUBTYPE_MPEG2_VIDEO, &FORMAT_MPEG2Video},
    {&MEDIATYPE_Video, nullptr, &FORMAT_VideoInfo},
    {&MEDIATYPE_Video, nullptr, &FORMAT_VideoInfo2},
    {&MEDIATYPE_Video, &mediasubtype::kTheora, nullptr},

    {&MEDIATYPE_Audio, &mediasubtype::kAc3WaveTag, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kDolbyAc3, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kDolbyDdPlus, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kDolbyTrueHd, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kMp3, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kMpeg1Audio, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kDtsWaveTag, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kDts, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kPcm, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kIeeeFloat, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kTta1, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kWavPack4, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kVorbis, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kFlacFramed, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kRawAac, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kMuLaw, nullptr},
    {&MEDIATYPE_Audio, &mediasubtype::kOpus, nullptr},

    {&MEDIATYPE_Text, nullptr, nullptr},

    {&mediatype::kSubtitle, &mediasubtype::kUtf8, nullptr},
    {&mediatype::kSubtitle, &mediasubtype::kSsa, nullptr},
    {&mediatype::kSubtitle, &mediasubtype::kAss, nullptr},
    {&mediatype::kSubtitle, &mediasubtype::kUsf, nullptr},
    {&mediatype::kSubtitle, &mediasubtype::kVobSub, nullptr},
    {&mediatype::kSubtitle, &GUID_NULL, &mediaformat::kSubtitleInfo},
};

bool Matches(const GUID* wanted, const GUID& value) {
    return wanted == nullptr || IsEqualGUID(*wanted, value);
}

} // namespace

bool IsAcceptedInputType(const AM_MEDIA_TYPE& type) {
    return std::any_of(std::begin(kAcceptedTypes), std::end(kAcceptedTypes), [&type](const AcceptedType& row) {
        return Matches(row.major, type.majortype) && Matches(row.subtype, type.subtype) &&
               Matches(row.format, type.formattype);
    });
}

MuxStreamKind StreamKindOf(const AM_MEDIA_TYPE& type) {
    if (IsEqualGUID(type.majortype, MEDIATYPE_Video)) {
        return MuxStreamKind::Video;
    }
    if (IsEqualGUID(type.majortype, MEDIATYPE_Audio)) {
        return MuxStreamKind::Audio;
    }
    return IsTextOrSubtitle(type) ? MuxStreamKind::Subtitle : MuxStreamKind::Other;
}

bool IsTextOrSubtitle(const AM_MEDIA_TYPE& type) {
    return IsEqualGUID(type.majortype, MEDIATYPE_Text) || IsEqualGUID(type.majortype, mediatype::kSubtitle);
}

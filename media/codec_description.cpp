#include "media/codec_description.h"

#include "dshow/media_subtypes.h"
#include "media/audio_codec_mapper.h"
#include "media/subtitle_codec_mapper.h"
#include "media/video_codec_mapper.h"
#include "mkv/writer_errors.h"

namespace mkv {

namespace {

// 0 when there is none.
INT32 FindTrackType(const GUID& major) {
    if (major == MEDIATYPE_Video) {
        return kTrackTypeVideo;
    }
    if (major == MEDIATYPE_Audio) {
        return kTrackTypeAudio;
    }
    return major == MEDIATYPE_Text || major == mediatype::kSubtitle ? kTrackTypeSubtitle : 0;
}

} // namespace

INT32 TrackTypeOf(const AM_MEDIA_TYPE& type) {
    const INT32 trackType = FindTrackType(type.majortype);
    if (trackType == 0) {
        throw kUnsupportedTypeError;
    }
    return trackType;
}

CodecDescription DescribeCodec(const AM_MEDIA_TYPE& type) {
    switch (FindTrackType(type.majortype)) {
    case kTrackTypeVideo:
        return DescribeVideoCodec(type);
    case kTrackTypeAudio:
        return DescribeAudioCodec(type);
    case kTrackTypeSubtitle:
        return DescribeSubtitleCodec(type);
    default:
        return {};
    }
}

std::string CodecIdOf(const AM_MEDIA_TYPE& type) {
    return DescribeCodec(type).codecId;
}

} // namespace mkv

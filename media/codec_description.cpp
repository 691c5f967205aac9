#include "media/codec_description.h"

#include "media/audio_codec_mapper.h"
#include "media/subtitle_codec_mapper.h"
#include "media/track_type.h"
#include "media/video_codec_mapper.h"

namespace media {

CodecDescription DescribeCodec(const AM_MEDIA_TYPE& type) {
    switch (FindTrackType(type)) {
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

} // namespace media

#include "matroska_muxer/stream_kind.h"

#include "media/track_type.h"

MuxStreamKind StreamKindOf(const AM_MEDIA_TYPE& type) {
    switch (media::FindTrackType(type.majortype)) {
    case media::kTrackTypeVideo:
        return MuxStreamKind::Video;
    case media::kTrackTypeAudio:
        return MuxStreamKind::Audio;
    case media::kTrackTypeSubtitle:
        return MuxStreamKind::Subtitle;
    default:
        return MuxStreamKind::Other;
    }
}

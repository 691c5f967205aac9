#include "media/track_type.h"

#include "dshow/media_subtypes.h"

namespace media {

INT32 FindTrackType(const AM_MEDIA_TYPE& type) {
    if (type.majortype == MEDIATYPE_Video) {
        return kTrackTypeVideo;
    }
    if (type.majortype == MEDIATYPE_Audio) {
        return kTrackTypeAudio;
    }
    const bool isText = type.majortype == MEDIATYPE_Text || type.majortype == mediatype::kSubtitle;
    return isText ? kTrackTypeSubtitle : kNoTrackType;
}

} // namespace media

#include "media/track_type.h"

#include "dshow/media_subtypes.h"

namespace media {

INT32 FindTrackType(const GUID& majorType) {
    if (majorType == MEDIATYPE_Video) {
        return kTrackTypeVideo;
    }
    if (majorType == MEDIATYPE_Audio) {
        return kTrackTypeAudio;
    }
    const bool isText = majorType == MEDIATYPE_Text || majorType == mediatype::kSubtitle;
    return isText ? kTrackTypeSubtitle : kNoTrackType;
}

} // namespace media

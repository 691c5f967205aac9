#include "mkv/webm_refusal.h"

#include <string>

#include "media/codec_description.h"
#include "media/webm_subset.h"

namespace mkv {

void RefuseWhatIsNotWebm(const TrackList& tracks, bool hasAttachments) {
    for (const Track& track : tracks) {
        const std::string codecId = media::DescribeStrictCodec(track.type).codecId;
        if (!codecId.empty() && !media::IsInWebmSubset(codecId)) {
            const INT32 input = track.flags.index;
            throw NotWebmError("input " + std::to_string(input) + " (" + codecId + ")", input);
        }
    }
    if (hasAttachments) {
        throw NotWebmError("an attachment", std::nullopt);
    }
}

} // namespace mkv

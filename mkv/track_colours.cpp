#include "mkv/track_colours.h"

#include <matroska/KaxTrackVideo.h>

#include "media/described_colour.h"
#include "mkv/strict_colour.h"

namespace mkv {

void CTrackColours::add(libmatroska::KaxTrackEntry& entry, UINT32 stream, const Track& track, bool isWebm,
                        bool isLive) {
    const media::CodecDescription description = media::DescribeStrictCodec(track.type);
    if (!description.video) {
        return;
    }
    auto& video = libebml::GetChild<libmatroska::KaxTrackVideo>(entry);
    media::Colour colour = ToldColour(track.colour);
    colour.TakeMissing(description.video->colour);
    if (description.video->mayTellColourLater && !isLive) {
        m_late.try_emplace(stream, track, video);
    } else if (!colour.IsEmpty()) {
        FillColour(libebml::GetChild<libmatroska::KaxVideoColour>(video), colour);
    }
    if (!isWebm) {
        AddDolbyVision(entry, track.colour);
    }
}

void CTrackColours::fill(UINT32 stream, std::span<const BYTE> keyframe, CFilePatcher& patcher) {
    const auto late = m_late.find(stream);
    if (late == m_late.end()) {
        return;
    }
    media::Colour colour = ToldColour(late->second.track.colour);
    colour.TakeMissing(media::ColourWithFirstFrame(late->second.track.type, keyframe));
    if (!colour.IsEmpty()) {
        libmatroska::KaxVideoColour element;
        FillColour(element, colour);
        (void)late->second.place.fill(element, patcher);
    }
}

} // namespace mkv

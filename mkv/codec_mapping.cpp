#include "mkv/codec_mapping.h"

#include <matroska/KaxTrackAudio.h>
#include <matroska/KaxTrackVideo.h>
#include <matroska/KaxTracks.h>

#include "media/codec_description.h"
#include "media/track_type.h"
#include "mkv/element_values.h"
#include "mkv/writer_errors.h"

namespace mkv {

namespace {

using libebml::EbmlMaster;

void ApplyVideo(EbmlMaster& video, const media::VideoDescription& description) {
    SetChild<libmatroska::KaxVideoPixelWidth>(video, description.pixelWidth);
    SetChild<libmatroska::KaxVideoPixelHeight>(video, description.pixelHeight);
    if (description.display) {
        SetChild<libmatroska::KaxVideoDisplayWidth>(video, description.display->width);
        SetChild<libmatroska::KaxVideoDisplayHeight>(video, description.display->height);
    }
}

void ApplyAudio(EbmlMaster& audio, const media::AudioDescription& description) {
    SetChild<libmatroska::KaxAudioSamplingFreq>(audio, static_cast<double>(description.samplingFrequencyHz));
    SetChild<libmatroska::KaxAudioChannels>(audio, description.channels);
    if (description.bitDepth) {
        SetChild<libmatroska::KaxAudioBitDepth>(audio, *description.bitDepth);
    }
}

void Apply(libmatroska::KaxTrackEntry& entry, const media::CodecDescription& description) {
    if (description.lacing) {
        entry.EnableLacing(*description.lacing);
    }
    if (description.defaultDurationNs) {
        SetChild<libmatroska::KaxTrackDefaultDuration>(entry, *description.defaultDurationNs);
    }
    if (description.video) {
        ApplyVideo(libebml::GetChild<libmatroska::KaxTrackVideo>(entry), *description.video);
    }
    if (description.audio) {
        ApplyAudio(libebml::GetChild<libmatroska::KaxTrackAudio>(entry), *description.audio);
    }
    if (description.codecPrivate) {
        SetBytesChild<libmatroska::KaxCodecPrivate>(entry, *description.codecPrivate);
    }
}

} // namespace

INT32 TrackTypeOf(const AM_MEDIA_TYPE& type) {
    const INT32 trackType = media::FindTrackType(type.majortype);
    if (trackType == media::kNoTrackType) {
        throw kUnsupportedTypeError;
    }
    return trackType;
}

std::string MapCodec(const AM_MEDIA_TYPE& type, libmatroska::KaxTrackEntry& entry) {
    const media::CodecDescription description = media::DescribeCodec(type);
    Apply(entry, description);
    return description.codecId;
}

} // namespace mkv

#include "mkv/strict_codec_mapping.h"

#include <cstring>

#include <matroska/KaxTrackAudio.h>
#include <matroska/KaxTrackVideo.h>
#include <matroska/KaxTracks.h>

#include "mkv/element_values.h"

namespace mkv {

namespace {

using libebml::EbmlMaster;

// Its first letter is in the lowest byte.
void SetColourSpace(EbmlMaster& video, DWORD fourCc) {
    BYTE letters[sizeof(fourCc)];
    std::memcpy(letters, &fourCc, sizeof(letters));
    SetBytesChild<libmatroska::KaxVideoColourSpace>(video, letters);
}

void FillVideo(EbmlMaster& video, const media::VideoDescription& description, bool isWebm) {
    SetChild<libmatroska::KaxVideoPixelWidth>(video, description.pixelWidth);
    SetChild<libmatroska::KaxVideoPixelHeight>(video, description.pixelHeight);
    if (description.display) {
        SetChild<libmatroska::KaxVideoDisplayWidth>(video, description.display->width);
        SetChild<libmatroska::KaxVideoDisplayHeight>(video, description.display->height);
    }
    if (description.uncompressedFourCc) {
        SetColourSpace(video, *description.uncompressedFourCc);
    }
    if (description.flagInterlaced) {
        SetToldChild<libmatroska::KaxVideoFlagInterlaced>(video, *description.flagInterlaced);
    }
    if (description.fieldOrder && !isWebm) {
        SetToldChild<libmatroska::KaxVideoFieldOrder>(video, *description.fieldOrder);
    }
}

void FillAudio(EbmlMaster& audio, const media::AudioDescription& description) {
    SetToldChild<libmatroska::KaxAudioSamplingFreq>(audio, static_cast<double>(description.samplingFrequencyHz));
    if (description.outputSamplingFrequencyHz) {
        const auto outputHz = static_cast<double>(*description.outputSamplingFrequencyHz);
        SetChild<libmatroska::KaxAudioOutputSamplingFreq>(audio, outputHz);
    }
    SetToldChild<libmatroska::KaxAudioChannels>(audio, description.channels);
    if (description.bitDepth) {
        SetChild<libmatroska::KaxAudioBitDepth>(audio, *description.bitDepth);
    }
}

} // namespace

void FillStrictCodec(libmatroska::KaxTrackEntry& entry, const media::CodecDescription& description, bool isWebm) {
    SetChild<libmatroska::KaxCodecID>(entry, description.codecId);
    if (description.codecPrivate) {
        SetBytesChild<libmatroska::KaxCodecPrivate>(entry, *description.codecPrivate);
    }
    if (description.defaultDurationNs) {
        SetChild<libmatroska::KaxTrackDefaultDuration>(entry, *description.defaultDurationNs);
    }
    if (description.codecDelayNs != 0) {
        SetChild<libmatroska::KaxCodecDelay>(entry, description.codecDelayNs);
    }
    if (description.seekPreRollNs != 0) {
        SetChild<libmatroska::KaxSeekPreRoll>(entry, description.seekPreRollNs);
    }
    if (description.maxBlockAdditionId != 0) {
        SetChild<libmatroska::KaxMaxBlockAdditionID>(entry, description.maxBlockAdditionId);
    }
    if (description.video) {
        FillVideo(libebml::GetChild<libmatroska::KaxTrackVideo>(entry), *description.video, isWebm);
    }
    if (description.audio) {
        FillAudio(libebml::GetChild<libmatroska::KaxTrackAudio>(entry), *description.audio);
    }
}

} // namespace mkv

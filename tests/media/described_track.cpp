#include "tests/media/described_track.h"

#include <sstream>

#include "tests/support/hex_bytes.h"

namespace media_test {

std::string TextOf(const media::CodecDescription& description) {
    std::ostringstream text;
    text << description.codecId << " duration " << description.defaultDurationNs.value_or(0);
    if (description.video) {
        const media::DisplaySize display = description.video->display.value_or(media::DisplaySize{});
        text << " video " << description.video->pixelWidth << 'x' << description.video->pixelHeight << " as "
             << display.width << 'x' << display.height << " FourCC "
             << description.video->uncompressedFourCc.value_or(0);
    }
    if (description.audio) {
        text << " audio " << description.audio->samplingFrequencyHz << ' ' << description.audio->channels << ' '
             << (description.audio->bitDepth ? std::to_string(*description.audio->bitDepth) : "-");
    }
    text << " private " << (description.codecPrivate ? mkv_test::ToHex(*description.codecPrivate) : "none");
    return text.str();
}

media::TrackFacts TrackFor(INT32 trackType, const media::CodecDescription& written) {
    media::TrackFacts track;
    track.type = static_cast<UINT64>(trackType);
    track.codecId = written.codecId;
    track.codecPrivate = written.codecPrivate.value_or(std::vector<BYTE>());
    track.defaultDurationNs = written.defaultDurationNs.value_or(0);
    if (written.video) {
        const media::DisplaySize display = written.video->display.value_or(media::DisplaySize{});
        track.video = {written.video->pixelWidth, written.video->pixelHeight, 0, 0, display.width, display.height};
        track.video.uncompressedFourCc = written.video->uncompressedFourCc.value_or(0);
    }
    if (written.audio) {
        track.audio = {static_cast<double>(written.audio->samplingFrequencyHz), written.audio->channels,
                       written.audio->bitDepth.value_or(0)};
    }
    return track;
}

} // namespace media_test

#include "media/media_types_of.h"

#include <cstring>

#include <gmock/gmock.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "media/format_builder.h"

namespace media {
namespace {

using testing::IsEmpty;

std::vector<BYTE> Text(const std::string& text) {
    return {text.begin(), text.end()};
}

TrackFacts VideoTrackOf(const std::string& codecId, std::vector<BYTE> codecPrivate) {
    TrackFacts track;
    track.type = 1;
    track.codecId = codecId;
    track.codecPrivate = std::move(codecPrivate);
    track.defaultDurationNs = 40'000'000;
    track.video.pixelWidth = 720;
    track.video.pixelHeight = 576;
    track.video.displayWidth = 1024;
    track.video.displayHeight = 576;
    return track;
}

TrackFacts AudioTrackOf(const std::string& codecId, std::vector<BYTE> codecPrivate = {}) {
    TrackFacts track;
    track.type = 2;
    track.codecId = codecId;
    track.codecPrivate = std::move(codecPrivate);
    track.audio.samplingFrequency = 44100;
    track.audio.channels = 2;
    track.audio.bitDepth = 16;
    return track;
}

TrackFacts SubtitleTrackOf(const std::string& codecId, std::vector<BYTE> codecPrivate = {}) {
    TrackFacts track;
    track.type = 17;
    track.codecId = codecId;
    track.codecPrivate = std::move(codecPrivate);
    return track;
}

std::vector<BYTE> Bitmap(const char (&fourcc)[5], size_t extra) {
    BITMAPINFOHEADER bitmap{};
    bitmap.biSize = sizeof(bitmap);
    bitmap.biWidth = 720;
    bitmap.biHeight = 576;
    bitmap.biSizeImage = 77;
    std::memcpy(&bitmap.biCompression, fourcc, 4);
    std::vector<BYTE> bytes(sizeof(bitmap) + extra, 0xee);
    std::memcpy(bytes.data(), &bitmap, sizeof(bitmap));
    return bytes;
}

std::vector<BYTE> MuLawFormat() {
    WAVEFORMATEX wave{};
    wave.wFormatTag = 7;
    wave.nChannels = 2;
    wave.nSamplesPerSec = 44100;
    wave.wBitsPerSample = 16;
    std::vector<BYTE> bytes(sizeof(wave));
    std::memcpy(bytes.data(), &wave, sizeof(wave));
    return bytes;
}

// What the muxer writes for the track's preferred type.
CodecDescription Written(const TrackFacts& track) {
    const std::vector<CMediaType> types = MediaTypesOf(track);
    return types.empty() ? CodecDescription() : DescribeCodec(types.front());
}

struct Row {
    TrackFacts track;
    bool keepsPrivate = true;
};

class EveryCodec : public testing::TestWithParam<Row> {};

TEST_P(EveryCodec, IsWrittenBackWithTheSameIdentifierAndPrivateData) {
    const TrackFacts& track = GetParam().track;
    const CodecDescription written = Written(track);
    EXPECT_EQ(written.codecId, track.codecId);
    if (GetParam().keepsPrivate) {
        EXPECT_EQ(written.codecPrivate.value_or(std::vector<BYTE>()), track.codecPrivate);
    }
}

TEST_P(EveryCodec, KeepsSizesAndDurationsAndRates) {
    const TrackFacts& track = GetParam().track;
    const CodecDescription written = Written(track);
    if (track.type == 1) {
        EXPECT_EQ(written.defaultDurationNs, 40'000'000u);
        EXPECT_EQ(written.video->pixelWidth, 720u);
        EXPECT_EQ(written.video->pixelHeight, 576u);
    } else if (track.type == 2) {
        EXPECT_EQ(written.audio->samplingFrequencyHz, 44100u);
        EXPECT_EQ(written.audio->channels, 2u);
        EXPECT_EQ(written.audio->bitDepth.value_or(16), 16u);
    }
}

std::vector<BYTE> VorbisHeaders() {
    return Text(std::string("\2\3\4") + "aaabbbbccccc");
}

// With the reserved bits as the muxer writes them.
const std::vector<BYTE> kAvcPrivate{1, 100, 0, 11, 3, 1, 0, 3, 0x67, 1, 2, 1, 0, 2, 0x68, 9};

INSTANTIATE_TEST_SUITE_P(
    Video, EveryCodec,
    testing::Values(Row{VideoTrackOf("V_MPEG1", Text("sequence"))}, Row{VideoTrackOf("V_THEORA", Text("theora"))},
                    Row{VideoTrackOf("V_MPEG2", Text("sequence"))}, Row{VideoTrackOf("V_MPEG4/ISO/ASP", Text("vol"))},
                    Row{VideoTrackOf("V_MPEG4/ISO/AVC", kAvcPrivate)},
                    Row{VideoTrackOf("V_MPEGH/ISO/HEVC", Text("hvcC record"))}, Row{VideoTrackOf("V_VP8", {})},
                    Row{VideoTrackOf("V_VP9", Text("vp9"))}, Row{VideoTrackOf("V_MS/VFW/FOURCC", Bitmap("XVID", 0))},
                    Row{VideoTrackOf("V_MS/VFW/FOURCC", Bitmap("XVID", 9))},
                    Row{VideoTrackOf("V_MS/VFW/FOURCC", Bitmap("VP80", 5))},
                    Row{VideoTrackOf("V_MS/VFW/FOURCC", Bitmap("VP90", 0))}));

INSTANTIATE_TEST_SUITE_P(
    Audio, EveryCodec,
    testing::Values(Row{AudioTrackOf("A_AC3")}, Row{AudioTrackOf("A_EAC3")}, Row{AudioTrackOf("A_TRUEHD")},
                    Row{AudioTrackOf("A_MPEG/L3")}, Row{AudioTrackOf("A_MPEG/L2")}, Row{AudioTrackOf("A_DTS")},
                    Row{AudioTrackOf("A_PCM/INT/LIT")}, Row{AudioTrackOf("A_PCM/FLOAT/IEEE")},
                    Row{AudioTrackOf("A_TTA1", Text("tta"))}, Row{AudioTrackOf("A_WAVPACK4", Text("\x10\x04"))},
                    Row{AudioTrackOf("A_OPUS", Text("OpusHead"))}, Row{AudioTrackOf("A_VORBIS", VorbisHeaders())},
                    Row{AudioTrackOf("A_FLAC", Text("fLaC"))}, Row{AudioTrackOf("A_AAC", Text("\x12\x10"))},
                    Row{AudioTrackOf("A_REAL/", Text("cook"))}, Row{AudioTrackOf("A_MS/ACM", MuLawFormat())}));

INSTANTIATE_TEST_SUITE_P(Subtitle, EveryCodec,
                         testing::Values(Row{SubtitleTrackOf("S_TEXT/ASCII")}, Row{SubtitleTrackOf("S_TEXT/UTF8")},
                                         Row{SubtitleTrackOf("S_TEXT/SSA", Text("[Script Info]"))},
                                         Row{SubtitleTrackOf("S_TEXT/ASS", Text("[Script Info]"))},
                                         Row{SubtitleTrackOf("S_TEXT/USF", Text("<USF/>"))},
                                         Row{SubtitleTrackOf("S_VOBSUB", Text("size: 720x576"))},
                                         Row{SubtitleTrackOf("S_HDMV/PGS")}));

TEST(MediaTypesOf, TheDisplaySizeIsWrittenBackWhereTheTypeHasAShape) {
    for (const char* const codec : {"V_MPEG2", "V_THEORA", "V_MPEG4/ISO/ASP", "V_MPEG4/ISO/AVC", "V_MPEGH/ISO/HEVC"}) {
        const CodecDescription written = Written(VideoTrackOf(codec, Text("private")));
        ASSERT_TRUE(written.video && written.video->display) << codec;
        EXPECT_EQ(written.video->display->width, 1024u) << codec;
        EXPECT_EQ(written.video->display->height, 576u) << codec;
    }
}

TEST(MediaTypesOf, WithoutADisplaySizeTheVisiblePixelsCount) {
    TrackFacts track = VideoTrackOf("V_MPEG2", {});
    track.video.displayWidth = 0;
    track.video.displayHeight = 0;
    track.video.cropWidth = 20;
    const CodecDescription written = Written(track);
    EXPECT_EQ(written.video->display->width, 700u);
    EXPECT_EQ(written.video->display->height, 576u);
}

TEST(MediaTypesOf, TheUsualTypeComesFirst) {
    const auto subtypes = [](const TrackFacts& track) {
        std::vector<GUID> found;
        for (const CMediaType& type : MediaTypesOf(track)) {
            found.push_back(type.subtype);
        }
        return found;
    };
    EXPECT_EQ(subtypes(AudioTrackOf("A_AC3")), (std::vector{mediasubtype::kDolbyAc3, mediasubtype::kAc3WaveTag}));
    EXPECT_EQ(subtypes(AudioTrackOf("A_DTS")), (std::vector{mediasubtype::kDts, mediasubtype::kDtsWaveTag}));
    EXPECT_EQ(subtypes(VideoTrackOf("V_MPEG4/ISO/AVC", kAvcPrivate)), std::vector{mediasubtype::kAvc1});
    TrackFacts square = VideoTrackOf("V_MS/VFW/FOURCC", Bitmap("XVID", 0));
    square.video.displayWidth = 720;
    EXPECT_EQ(MediaTypesOf(square).at(0).formattype, FORMAT_VideoInfo);
    EXPECT_EQ(MediaTypesOf(square).at(1).formattype, FORMAT_VideoInfo2);
}

TEST(MediaTypesOf, CodecsOutsideTheTableHaveNone) {
    for (const char* const codec : {"V_DIRAC", "V_UNCOMPRESSED", "V_MJPEG", ""}) {
        EXPECT_THAT(MediaTypesOf(VideoTrackOf(codec, {})), IsEmpty()) << codec;
    }
    for (const char* const codec : {"A_MPEG/L1", "A_AAC/MPEG4/LC", ""}) {
        EXPECT_THAT(MediaTypesOf(AudioTrackOf(codec)), IsEmpty()) << codec;
    }
    EXPECT_THAT(MediaTypesOf(SubtitleTrackOf("S_HDMV/TEXTST")), IsEmpty());
    TrackFacts buttons = SubtitleTrackOf("S_VOBSUB");
    buttons.type = 18;
    EXPECT_THAT(MediaTypesOf(buttons), IsEmpty());
}

TEST(MediaTypesOf, PrivateDataThatIsCutOffGivesNoTypeOrAShorterOne) {
    for (size_t length = 0; length < 40; ++length) {
        std::vector<BYTE> bitmap = Bitmap("XVID", 0);
        bitmap.resize(length);
        EXPECT_THAT(MediaTypesOf(VideoTrackOf("V_MS/VFW/FOURCC", bitmap)), IsEmpty());
    }
    for (size_t length = 0; length < kAvcPrivate.size(); ++length) {
        const std::vector<BYTE> cut(kAvcPrivate.begin(), kAvcPrivate.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_EQ(Written(VideoTrackOf("V_MPEG4/ISO/AVC", cut)).codecId, "V_MPEG4/ISO/AVC");
    }
    EXPECT_THAT(MediaTypesOf(AudioTrackOf("A_VORBIS", Text("\2\3"))), IsEmpty());
    EXPECT_THAT(MediaTypesOf(AudioTrackOf("A_VORBIS", Text("\1\3aaab"))), IsEmpty()); // two headers
    EXPECT_THAT(MediaTypesOf(AudioTrackOf("A_MS/ACM", Text("short"))), IsEmpty());
}

TEST(MediaTypesOf, SilentlyWrongNumbersStayWithinTheFieldsOfTheStructures) {
    TrackFacts track = AudioTrackOf("A_AC3");
    for (const double rate : {-1.0, 0.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        track.audio.samplingFrequency = rate;
        EXPECT_EQ(Written(track).audio->samplingFrequencyHz, 0u) << rate;
    }
    track.audio.samplingFrequency = 3e9; // more than the 32 bits of a long
    EXPECT_EQ(Written(track).audio->samplingFrequencyHz, 3'000'000'000u);
    TrackFacts video = VideoTrackOf("V_MPEG2", {});
    video.video.pixelWidth = UINT64_MAX;
    video.defaultDurationNs = UINT64_MAX;
    EXPECT_EQ(Written(video).video->pixelWidth, static_cast<UINT64>(INT32_MAX));
    EXPECT_EQ(Written(video).defaultDurationNs, 0u);
}

// Only what goes behind the block, and so has to have its length in it, can be too much.
TEST(MediaTypesOf, PrivateDataThatACodecHasNoUseForIsNeverTooMuch) {
    const std::vector<BYTE> large(70'000);
    EXPECT_FALSE(MediaTypesOf(AudioTrackOf("A_AC3", large)).empty());
    EXPECT_THAT(MediaTypesOf(AudioTrackOf("A_FLAC", large)), IsEmpty());
}

} // namespace
} // namespace media

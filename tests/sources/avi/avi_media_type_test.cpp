#include "sources/avi/avi_media_type.h"

#include <cstring>

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "tests/sources/avi/avi_builder.h"

namespace avi {
namespace {

using namespace test_avi;

AviStream StreamOf(const std::string& list) {
    const auto file = ReadAviFile(MemorySource(Riff("AVI ", List("hdrl", list))));
    return file ? file->streams.at(0) : AviStream();
}

TEST(AviMediaType, VideoKeepsItsBitmapHeaderAndWhatFollows) {
    AviStream stream = StreamOf(VideoStream());
    stream.format.insert(stream.format.end(), {1, 2, 3});
    const CMediaType type = MediaTypeOf(stream);
    EXPECT_EQ(type.majortype, MEDIATYPE_Video);
    EXPECT_EQ(type.subtype, SubtypeFromFourCC('c', 'v', 'i', 'd'));
    EXPECT_EQ(type.formattype, FORMAT_VideoInfo);
    ASSERT_EQ(type.cbFormat, sizeof(VIDEOINFOHEADER) + 3);
    VIDEOINFOHEADER info;
    std::memcpy(&info, type.pbFormat, sizeof(info));
    EXPECT_EQ(info.AvgTimePerFrame, 400000);
    EXPECT_EQ(info.bmiHeader.biWidth, 8);
    EXPECT_EQ(info.bmiHeader.biHeight, 4);
    EXPECT_EQ(type.pbFormat[sizeof(VIDEOINFOHEADER) + 2], 3);
}

TEST(AviMediaType, UncompressedVideoIsNamedByItsDepth) {
    AviStream stream = StreamOf(VideoStream());
    const std::vector<std::pair<WORD, GUID>> depths{
        {8, MEDIASUBTYPE_RGB8}, {16, MEDIASUBTYPE_RGB555}, {24, MEDIASUBTYPE_RGB24}, {32, MEDIASUBTYPE_RGB32}};
    for (const auto& [depth, subtype] : depths) {
        const DWORD uncompressed = 0;
        std::memcpy(stream.format.data() + offsetof(BITMAPINFOHEADER, biBitCount), &depth, sizeof(depth));
        std::memcpy(stream.format.data() + offsetof(BITMAPINFOHEADER, biCompression), &uncompressed, 4);
        EXPECT_EQ(MediaTypeOf(stream).subtype, subtype) << depth;
    }
}

TEST(AviMediaType, TheOldWaveFormatGetsItsMissingField) {
    const CMediaType type = MediaTypeOf(StreamOf(AudioStream()));
    EXPECT_EQ(type.majortype, MEDIATYPE_Audio);
    EXPECT_EQ(type.subtype, mediasubtype::kPcm);
    EXPECT_EQ(type.formattype, FORMAT_WaveFormatEx);
    ASSERT_EQ(type.cbFormat, sizeof(WAVEFORMATEX));
    EXPECT_EQ(type.lSampleSize, 2u);
    WAVEFORMATEX wave;
    std::memcpy(&wave, type.pbFormat, sizeof(wave));
    EXPECT_EQ(wave.nSamplesPerSec, 8000u);
    EXPECT_EQ(wave.cbSize, 0);
}

TEST(AviMediaType, FormatsThatAreCutOffAndOtherStreamsHaveNoType) {
    for (AviStream stream : {StreamOf(VideoStream()), StreamOf(AudioStream())}) {
        const size_t least = stream.type == 0x73646976 ? 40 : 16;
        for (size_t length = 0; length < least; ++length) {
            AviStream cut = stream;
            cut.format.resize(length);
            cut.format.shrink_to_fit();
            EXPECT_FALSE(MediaTypeOf(cut).IsValid()) << length;
        }
    }
    AviStream text;
    text.type = 0x73747874; // 'txts'
    text.format.resize(100);
    EXPECT_FALSE(MediaTypeOf(text).IsValid());
}

} // namespace
} // namespace avi

#include "mkvmux/media_type_text.h"

#include <gtest/gtest.h>

#include "tests/support/media_types.h"

namespace mkvmux {
namespace {

using namespace test_support;

TEST(MediaTypeText, NamesVideoByItsFourCCAndPicture) {
    EXPECT_EQ(DescribeMediaType(VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get()),
              "video 'cvid', 320x240, 25 fps");
    EXPECT_EQ(DescribeMediaType(VideoInfo2Type(mediasubtype::kVp9).Get()), "video 'VP90', 320x240, 25 fps");
    VideoShape shape;
    shape.averageTimePerFrame = 0;
    shape.height = -240;
    EXPECT_EQ(DescribeMediaType(VideoInfoType(MEDIASUBTYPE_RGB24, shape).Get()),
              "video {E436EB7D-524F-11CE-9F53-0020AF0BA770}, 320x-240");
}

TEST(MediaTypeText, NamesAudioByItsWaveTagAndRate) {
    EXPECT_EQ(DescribeMediaType(WaveType(mediasubtype::kPcm).Get()),
              "audio wave tag 0x0001, 48000 Hz, 2 channels, 16 bits");
    AudioShape shape;
    shape.channels = 1;
    shape.bitsPerSample = 0;
    EXPECT_EQ(DescribeMediaType(WaveType(mediasubtype::kMp3, shape).Get()),
              "audio wave tag 0x0055, 48000 Hz, 1 channel");
}

TEST(MediaTypeText, NamesTextAndSubtitles) {
    EXPECT_EQ(DescribeMediaType(SubtitleType(mediasubtype::kUtf8).Get()),
              "subtitle {87C0B230-03A8-4FDF-8010-B27A5848200D}");
    EXPECT_EQ(DescribeMediaType(TextType().Get()).substr(0, 5), "text ");
}

TEST(MediaTypeText, SurvivesFormatBlocksOfEveryLength) {
    const MediaTypeValue video = VideoInfo2Type(mediasubtype::kVp9);
    const MediaTypeValue audio = WaveType(mediasubtype::kPcm);
    for (const MediaTypeValue* whole : {&video, &audio}) {
        for (ULONG length = 0; length < whole->Get().cbFormat; ++length) {
            // In a block of exactly that length.
            std::vector<BYTE> block(whole->Get().pbFormat, whole->Get().pbFormat + length);
            AM_MEDIA_TYPE type = whole->Get();
            type.cbFormat = length;
            type.pbFormat = block.empty() ? nullptr : block.data();
            const std::string text = DescribeMediaType(type);
            EXPECT_EQ(text.find(','), std::string::npos) << text;
        }
    }
}

TEST(MediaTypeText, UnprintableFourCCsBecomeQuestionMarks) {
    EXPECT_EQ(DescribeMediaType(VideoInfoType(SubtypeFromFourCC('a', '\x01', '\n', 'd')).Get()).substr(0, 12),
              "video 'a??d'");
}

} // namespace
} // namespace mkvmux

// The codec-specific part of a strict track entry.
#include <gtest/gtest.h>
#include <matroska/KaxTrackAudio.h>
#include <matroska/KaxTrackVideo.h>
#include <matroska/KaxTracks.h>

#include <optional>

#include "mkv/strict_codec_mapping.h"

namespace {

using libmatroska::KaxTrackEntry;
using media::CodecDescription;

CodecDescription Video(const media::VideoDescription& video) {
    CodecDescription description;
    description.codecId = "V_X";
    description.video = video;
    return description;
}

CodecDescription Audio(const media::AudioDescription& audio) {
    CodecDescription description;
    description.codecId = "A_X";
    description.audio = audio;
    return description;
}

// What is written of a child; none where it is left out.
template <typename Child>
std::optional<double> Written(libebml::EbmlMaster& parent) {
    auto* const child = libebml::FindChild<Child>(parent);
    if (child == nullptr || child->IsDefaultValue()) {
        return std::nullopt;
    }
    return static_cast<double>(child->GetValue());
}

class StrictCodecTest : public testing::Test {
  protected:
    void Fill(const CodecDescription& description, bool isWebm = false) {
        mkv::FillStrictCodec(m_entry, description, isWebm);
    }
    template <typename Child>
    std::optional<double> OfEntry() {
        return Written<Child>(m_entry);
    }
    template <typename Child>
    std::optional<double> OfVideo() {
        return Written<Child>(libebml::GetChild<libmatroska::KaxTrackVideo>(m_entry));
    }
    template <typename Child>
    std::optional<double> OfAudio() {
        return Written<Child>(libebml::GetChild<libmatroska::KaxTrackAudio>(m_entry));
    }

    KaxTrackEntry m_entry;
};

TEST_F(StrictCodecTest, WhatIsNotToldIsLeftOut) {
    Fill(Video({.pixelWidth = 720, .pixelHeight = 576}));
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoPixelWidth>(), 720.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoPixelHeight>(), 576.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoDisplayWidth>(), std::nullopt);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoDisplayHeight>(), std::nullopt);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFlagInterlaced>(), std::nullopt);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFieldOrder>(), std::nullopt);
    EXPECT_EQ(OfEntry<libmatroska::KaxTrackDefaultDuration>(), std::nullopt);
    EXPECT_EQ(OfEntry<libmatroska::KaxCodecDelay>(), std::nullopt);
    EXPECT_EQ(OfEntry<libmatroska::KaxSeekPreRoll>(), std::nullopt);
    EXPECT_EQ(libebml::FindChild<libmatroska::KaxCodecPrivate>(m_entry), nullptr);
    EXPECT_EQ(libebml::FindChild<libmatroska::KaxTrackAudio>(m_entry), nullptr);
}

TEST_F(StrictCodecTest, EachValueOfAPictureIsWritten) {
    media::VideoDescription video{.pixelWidth = 720, .pixelHeight = 576};
    video.display = {1024, 576};
    video.flagInterlaced = 1;
    video.fieldOrder = 6;
    CodecDescription description = Video(video);
    description.defaultDurationNs = 40'000'000;
    Fill(description);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoDisplayWidth>(), 1024.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoDisplayHeight>(), 576.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFlagInterlaced>(), 1.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFieldOrder>(), 6.0);
    EXPECT_EQ(OfEntry<libmatroska::KaxTrackDefaultDuration>(), 40e6);
}

TEST_F(StrictCodecTest, AProgressivePictureSaysSo) {
    Fill(Video({.pixelWidth = 720, .pixelHeight = 576, .flagInterlaced = 2, .fieldOrder = 2}));
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFlagInterlaced>(), 2.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFieldOrder>(), 2.0); // the format's default, but told
}

TEST_F(StrictCodecTest, WebmHasNoFieldOrder) {
    Fill(Video({.pixelWidth = 720, .pixelHeight = 576, .flagInterlaced = 1, .fieldOrder = 1}), true);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFlagInterlaced>(), 1.0);
    EXPECT_EQ(OfVideo<libmatroska::KaxVideoFieldOrder>(), std::nullopt);
}

TEST_F(StrictCodecTest, RateAndChannelsAreWrittenWhateverTheyAre) {
    Fill(Audio({.samplingFrequencyHz = 8000, .channels = 1, .bitDepth = std::nullopt})); // both the format's defaults
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioSamplingFreq>(), 8000.0);
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioChannels>(), 1.0);
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioOutputSamplingFreq>(), std::nullopt);
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioBitDepth>(), std::nullopt);
    EXPECT_EQ(libebml::FindChild<libmatroska::KaxTrackVideo>(m_entry), nullptr);
}

TEST_F(StrictCodecTest, TheRateThatComesOutIsWrittenBesideTheCoresOwn) {
    media::AudioDescription audio{.samplingFrequencyHz = 24000, .channels = 2, .bitDepth = std::nullopt};
    audio.outputSamplingFrequencyHz = 48000;
    Fill(Audio(audio));
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioSamplingFreq>(), 24000.0);
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioOutputSamplingFreq>(), 48000.0);
}

TEST_F(StrictCodecTest, DelaysAndPrivateDataAreWritten) {
    CodecDescription description = Audio({.samplingFrequencyHz = 48000, .channels = 2, .bitDepth = 24});
    description.codecPrivate = {{1, 2, 3}};
    description.codecDelayNs = 6'500'000;
    description.seekPreRollNs = 80'000'000;
    Fill(description);
    EXPECT_EQ(OfAudio<libmatroska::KaxAudioBitDepth>(), 24.0);
    EXPECT_EQ(OfEntry<libmatroska::KaxCodecDelay>(), 6.5e6);
    EXPECT_EQ(OfEntry<libmatroska::KaxSeekPreRoll>(), 80e6);
    const auto* const bytes = libebml::FindChild<libmatroska::KaxCodecPrivate>(m_entry);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(std::vector<BYTE>(bytes->GetBuffer(), bytes->GetBuffer() + bytes->GetSize()), description.codecPrivate);
    EXPECT_EQ(libebml::GetChild<libmatroska::KaxCodecID>(m_entry).GetValue(), "A_X");
}

} // namespace

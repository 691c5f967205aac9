#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeAudioCodec;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::AudioShape;
using test_support::MediaTypeValue;
using test_support::WaveType;

const Bytes kExtra = FromHex("1210aa");
constexpr AudioShape kShape{44100, 6, 24, 100000};

enum class Private { None, Extra, Whole };

struct RowCase {
    const char* name;
    GUID subtype;
    const char* codecId;
    Private codecPrivate;
};

const RowCase kRowCases[] = {
    {"AC-3 by wave tag", SubtypeFromWaveTag(0x2000), "A_AC3", Private::None},
    {"AC-3", {0xe06d802c, 0xdb46, 0x11cf, {0xb4, 0xd1, 0, 0x80, 0x5f, 0x6c, 0xbb, 0xea}}, "A_AC3", Private::None},
    {"E-AC-3", {0xa7fb87af, 0x2d02, 0x42fb, {0xa4, 0xd4, 5, 0xcd, 0x93, 0x84, 0x3b, 0xdd}}, "A_EAC3", Private::None},
    {"TrueHD",
     {0xeb27cec4, 0x163e, 0x4ca3, {0x8b, 0x74, 0x8e, 0x25, 0xf9, 0x1b, 0x51, 0x7e}},
     "A_TRUEHD",
     Private::None},
    {"MP3", SubtypeFromWaveTag(0x0055), "A_MPEG/L3", Private::None},
    {"MPEG-1 audio", SubtypeFromWaveTag(0x0050), "A_MPEG/L2", Private::None},
    {"DTS by wave tag", SubtypeFromWaveTag(0x2001), "A_DTS", Private::None},
    {"DTS", {0xe06d8033, 0xdb46, 0x11cf, {0xb4, 0xd1, 0, 0x80, 0x5f, 0x6c, 0xbb, 0xea}}, "A_DTS", Private::None},
    {"PCM", SubtypeFromWaveTag(0x0001), "A_PCM/INT/LIT", Private::None},
    {"float PCM", SubtypeFromWaveTag(0x0003), "A_PCM/FLOAT/IEEE", Private::None},
    {"TTA", SubtypeFromWaveTag(0x77a1), "A_TTA1", Private::Extra},
    {"WavPack", SubtypeFromWaveTag(0x5756), "A_WAVPACK4", Private::Extra},
    {"Opus", SubtypeFromFourCC('O', 'P', 'U', 'S'), "A_OPUS", Private::Extra},
    {"FLAC", {0x1541c5c0, 0xcddf, 0x477d, {0xbc, 0x0a, 0x86, 0xf8, 0xae, 0x7f, 0x83, 0x54}}, "A_FLAC", Private::Extra},
    {"AAC", SubtypeFromWaveTag(0x00ff), "A_AAC", Private::Extra},
    {"RealAudio 2002", SubtypeFromWaveTag(0x2002), "A_REAL/", Private::Extra},
    {"RealAudio 2003", SubtypeFromWaveTag(0x2003), "A_REAL/", Private::Extra},
    {"RealAudio 2004", SubtypeFromWaveTag(0x2004), "A_REAL/", Private::Extra},
    {"RealAudio 0130", SubtypeFromWaveTag(0x0130), "A_REAL/", Private::Extra},
    {"RealAudio 0270", SubtypeFromWaveTag(0x0270), "A_REAL/", Private::Extra},
    {"mu-law", SubtypeFromWaveTag(0x0007), "A_MS/ACM", Private::Whole},
};

std::string PrivateOf(const MediaTypeValue& type) {
    const CodecDescription described = DescribeAudioCodec(type.Get());
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

std::string ExpectedPrivate(const RowCase& row, const MediaTypeValue& type) {
    switch (row.codecPrivate) {
    case Private::Extra:
        return ToHex(kExtra);
    case Private::Whole:
        return ToHex(type.Format());
    default:
        return "none";
    }
}

TEST(AudioCodecTest, EveryRowGivesItsCodecFieldsAndPrivateData) {
    for (const RowCase& row : kRowCases) {
        SCOPED_TRACE(row.name);
        const MediaTypeValue type = WaveType(row.subtype, kShape, kExtra);
        const CodecDescription described = DescribeAudioCodec(type.Get());
        EXPECT_EQ(described.codecId, row.codecId);
        EXPECT_EQ(PrivateOf(type), ExpectedPrivate(row, type));
        ASSERT_TRUE(described.audio.has_value());
        EXPECT_EQ(described.audio->samplingFrequencyHz, 44100u);
        EXPECT_EQ(described.audio->channels, 6u);
        EXPECT_EQ(described.audio->bitDepth, 24u);
        EXPECT_FALSE(described.video.has_value());
        EXPECT_FALSE(described.defaultDurationNs.has_value());
        EXPECT_EQ(described.lacing, true);
    }
}

TEST(AudioCodecTest, ABitDepthOfZeroIsWrittenExceptForOpus) {
    AudioShape shape = kShape;
    shape.bitsPerSample = 0;
    for (const RowCase& row : kRowCases) {
        const auto audio = DescribeAudioCodec(WaveType(row.subtype, shape, kExtra).Get()).audio.value();
        const bool isOpus = row.subtype == mediasubtype::kOpus;
        EXPECT_EQ(audio.bitDepth, isOpus ? std::nullopt : std::optional<UINT32>(0)) << row.name;
    }
}

TEST(AudioCodecTest, OnlyTheSubtypeDecidesAndNotTheFormatTag) {
    MediaTypeValue type = WaveType(mediasubtype::kRawAac, kShape, kExtra);
    type->pbFormat[0] = 0x01; // wFormatTag says PCM
    type->formattype = GUID_NULL;
    EXPECT_EQ(DescribeAudioCodec(type.Get()).codecId, "A_AAC");
}

TEST(AudioCodecTest, AnythingElseHasNoMapping) {
    for (const GUID& subtype : {SubtypeFromWaveTag(0x0161), SubtypeFromWaveTag(0x0002), SubtypeFromWaveTag(0x0006),
                                SubtypeFromWaveTag(0x1610), MEDIASUBTYPE_MPEG1Payload, GUID_NULL}) {
        const CodecDescription described = DescribeAudioCodec(WaveType(subtype, kShape, kExtra).Get());
        EXPECT_EQ(described.codecId, "");
        EXPECT_FALSE(described.codecPrivate.has_value());
        EXPECT_FALSE(described.audio.has_value());
        EXPECT_EQ(described.lacing, true);
    }
    MediaTypeValue notAudio = WaveType(mediasubtype::kPcm);
    notAudio->majortype = MEDIATYPE_Video;
    EXPECT_EQ(DescribeAudioCodec(notAudio.Get()).codecId, "");
    EXPECT_EQ(DescribeAudioCodec(notAudio.Get()).lacing, true);
}

// ---- Extra bytes -------------------------------------------------------------------------------------------------

TEST(AudioCodecTest, AacKeepsATwoByteConfigurationAndWithoutOneHasEmptyPrivateData) {
    const MediaTypeValue withConfiguration = WaveType(mediasubtype::kRawAac, kShape, FromHex("1210"));
    ASSERT_EQ(withConfiguration->cbFormat, 20u);
    EXPECT_EQ(PrivateOf(withConfiguration), "1210");
    const MediaTypeValue without = WaveType(mediasubtype::kRawAac, kShape);
    ASSERT_EQ(without->cbFormat, 18u);
    EXPECT_EQ(PrivateOf(without), ""); // present, and empty
}

TEST(AudioCodecTest, ABlockWithoutASizeFieldIsEnoughForTheRowsThatReadNoFurther) {
    for (const RowCase& row : kRowCases) {
        SCOPED_TRACE(row.name);
        const CodecDescription described = DescribeAudioCodec(WaveType(row.subtype, kShape, kExtra).CutTo(16).Get());
        const bool readsOn = row.codecPrivate != Private::None;
        EXPECT_EQ(described.codecId, readsOn ? "" : row.codecId);
        EXPECT_EQ(described.audio.has_value(), !readsOn);
        if (!readsOn) {
            EXPECT_EQ(described.audio->samplingFrequencyHz, 44100u);
            EXPECT_EQ(described.audio->channels, 6u);
            EXPECT_EQ(described.audio->bitDepth, 24u);
        }
    }
}

// cbSize lies at offset 16.
MediaTypeValue WithExtraSize(const GUID& subtype, WORD extraSize) {
    MediaTypeValue type = WaveType(subtype, kShape, kExtra);
    type->pbFormat[16] = static_cast<BYTE>(extraSize);
    type->pbFormat[17] = static_cast<BYTE>(extraSize >> 8);
    return type;
}

TEST(AudioCodecTest, ExtraBytesAreCountedByTheBlockAndNotByItsSizeField) {
    for (const WORD extraSize : {WORD{0}, WORD{1}, WORD{4}, WORD{65535}}) {
        EXPECT_EQ(PrivateOf(WithExtraSize(mediasubtype::kRawAac, extraSize)), ToHex(kExtra));
        EXPECT_EQ(DescribeAudioCodec(WithExtraSize(mediasubtype::kPcm, extraSize).Get()).codecId, "A_PCM/INT/LIT");
    }
}

TEST(AudioCodecTest, OpusCountsItsExtraBytesByTheSizeField) {
    EXPECT_EQ(PrivateOf(WithExtraSize(mediasubtype::kOpus, 0)), "");
    EXPECT_EQ(PrivateOf(WithExtraSize(mediasubtype::kOpus, 2)), "1210");
    EXPECT_EQ(PrivateOf(WithExtraSize(mediasubtype::kOpus, 3)), "1210aa");
    for (const WORD extraSize : {WORD{4}, WORD{65535}}) {
        const CodecDescription described = DescribeAudioCodec(WithExtraSize(mediasubtype::kOpus, extraSize).Get());
        EXPECT_EQ(described.codecId, "");
        EXPECT_FALSE(described.codecPrivate.has_value());
    }
}

TEST(AudioCodecTest, AllThatFitsTheFieldsIsPassedOn) {
    const auto audio =
        DescribeAudioCodec(WaveType(mediasubtype::kPcm, {0xffffffff, 32768, 65535, 0}).Get()).audio.value();
    EXPECT_EQ(audio.samplingFrequencyHz, 0xffffffffu);
    EXPECT_EQ(audio.channels, 32768u);
    EXPECT_EQ(audio.bitDepth, 65535u);
}

} // namespace

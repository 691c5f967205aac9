// ProRes, ALAC, big-endian PCM, pictures that are not compressed, WebVTT and DVB subtitles, as strict files hold them.
#include <cstring>

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "media/media_types_of.h"
#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeStrictCodec;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::VideoShape;

constexpr GUID kApch = SubtypeFromFourCC('a', 'p', 'c', 'h');

// The copy and what becomes of the bytes in place are the same.
std::string Converted(const MediaTypeValue& type, const std::string& hex) {
    const Bytes copy = media::ConvertStrictPayload(type.Get(), FromHex(hex));
    Bytes payload = FromHex(hex);
    const auto left = media::ConvertStrictInPlace(type.Get(), payload);
    EXPECT_TRUE(left);
    EXPECT_EQ(ToHex(Bytes(left->begin(), left->end())), ToHex(copy));
    return ToHex(copy);
}

std::string PrivateOf(const MediaTypeValue& type) {
    const CodecDescription described = DescribeStrictCodec(type.Get());
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

// ---- FFV1 and ProRes

TEST(StrictPictureTest, Ffv1HasItsConfigurationAndOldVersionsHaveNone) {
    for (const char* extra : {"aabbcc", ""}) {
        const std::string expected = *extra == 0 ? "none" : extra;
        EXPECT_EQ(PrivateOf(test_support::VideoInfoType(mediasubtype::kFfv1, {}, FromHex(extra))), expected);
        EXPECT_EQ(PrivateOf(test_support::VideoInfo2Type(mediasubtype::kFfv1, {}, FromHex(extra))), expected);
    }
}

TEST(StrictPictureTest, ProResTellsItsKindAndLosesTheHeadOfItsFrames) {
    const MediaTypeValue type = test_support::VideoInfo2Type(kApch, {}, FromHex("0102"));
    EXPECT_EQ(PrivateOf(type), "61706368");
    EXPECT_TRUE(media::NeedsStrictConversion(type.Get()));
    EXPECT_EQ(Converted(type, "0000000b 69637066 aabbcc"), "aabbcc");
    EXPECT_EQ(Converted(type, "00000008 69637066"), "");
    EXPECT_EQ(Converted(type, "00000007 696370"), "00000007696370");
    EXPECT_EQ(Converted(type, "0094 0000 4c617663 00a0"), "009400004c61766300a0");
    EXPECT_FALSE(media::NeedsStrictConversion(test_support::VideoInfo2Type(mediasubtype::kFfv1).Get()));
}

TEST(StrictPictureTest, ATrackOfProResIsWhatItsPrivateDataSays) {
    media::TrackFacts track;
    track.type = media::kTrackTypeVideo;
    track.codecId = "V_PRORES";
    track.video.pixelWidth = track.video.pixelHeight = 16;
    track.codecPrivate = FromHex("61707838"); // "apx8"
    EXPECT_TRUE(media::MediaTypesOf(track).empty());
    track.codecPrivate = FromHex("6170636800");
    EXPECT_TRUE(media::MediaTypesOf(track).empty());
    track.codecPrivate = FromHex("61706368");
    ASSERT_EQ(media::MediaTypesOf(track).size(), 1u);
    EXPECT_EQ(media::MediaTypesOf(track)[0].subtype, kApch);
}

// ---- Pictures that are not compressed

std::string FourCcOf(const GUID& subtype) {
    const auto described = DescribeStrictCodec(test_support::VideoInfoType(subtype).Get());
    const auto fourCc = described.video ? described.video->uncompressedFourCc : std::nullopt;
    Bytes bytes(sizeof(DWORD));
    std::memcpy(bytes.data(), &fourCc.value(), bytes.size());
    return described.codecId + " " + ToHex(bytes);
}

TEST(StrictPictureTest, UncompressedPicturesTellTheirForm) {
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_RGB24), "V_UNCOMPRESSED 42475218");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_RGB32), "V_UNCOMPRESSED 42475200");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_ARGB32), "V_UNCOMPRESSED 42475241");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_RGB555), "V_UNCOMPRESSED 5247420f");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_RGB565), "V_UNCOMPRESSED 52474210");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_YUY2), "V_UNCOMPRESSED 59555932");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_UYVY), "V_UNCOMPRESSED 55595659");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_YV12), "V_UNCOMPRESSED 59563132");
    EXPECT_EQ(FourCcOf(MEDIASUBTYPE_NV12), "V_UNCOMPRESSED 4e563132");
}

// A palette has no place in a track.
TEST(StrictPictureTest, PicturesWithAPaletteKeepTheirHeaderOfWindows) {
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfoType(MEDIASUBTYPE_RGB8).Get()).codecId, "V_MS/VFW/FOURCC");
}

TEST(StrictPictureTest, TheLowestRowOfRgbComesLast) {
    // Two pixels of three bytes, and two that fill the row.
    const MediaTypeValue bottomUp = test_support::VideoInfoType(MEDIASUBTYPE_RGB24, {2, 3});
    EXPECT_TRUE(media::NeedsStrictConversion(bottomUp.Get()));
    EXPECT_EQ(Converted(bottomUp, "111111222222 0000 333333444444 0000 555555666666 0000"),
              "555555666666333333444444111111222222");
    const MediaTypeValue topDown = test_support::VideoInfo2Type(MEDIASUBTYPE_RGB24, {2, -3});
    EXPECT_EQ(Converted(topDown, "111111222222 0000 333333444444 0000 555555666666 0000"),
              "111111222222333333444444555555666666");
    EXPECT_EQ(Converted(bottomUp, "111111222222 333333444444 555555666666"), "555555666666333333444444111111222222");
    EXPECT_EQ(Converted(topDown, "111111222222 333333444444 555555666666"), "111111222222333333444444555555666666");
}

TEST(StrictPictureTest, APictureOfAnotherSizeStaysAsItIs) {
    const MediaTypeValue type = test_support::VideoInfoType(MEDIASUBTYPE_RGB24, {2, 2});
    EXPECT_EQ(Converted(type, "01020304050607"), "01020304050607");
    EXPECT_EQ(Converted(type, ""), "");
    const MediaTypeValue huge = test_support::VideoInfoType(MEDIASUBTYPE_RGB32, {INT32_MAX, INT32_MAX});
    EXPECT_EQ(Converted(huge, "01020304"), "01020304");
    const MediaTypeValue upsideDown = test_support::VideoInfoType(MEDIASUBTYPE_RGB32, {1, INT32_MIN});
    EXPECT_EQ(Converted(upsideDown, "01020304"), "01020304");
}

TEST(StrictPictureTest, RowsThatAreInOrderAreNotTouched) {
    EXPECT_FALSE(media::NeedsStrictConversion(test_support::VideoInfoType(MEDIASUBTYPE_RGB32, {2, -2}).Get()));
    EXPECT_TRUE(media::NeedsStrictConversion(test_support::VideoInfoType(MEDIASUBTYPE_RGB32, {2, 2}).Get()));
    EXPECT_FALSE(media::NeedsStrictConversion(test_support::VideoInfoType(MEDIASUBTYPE_YUY2, {2, 2}).Get()));
    EXPECT_EQ(Converted(test_support::VideoInfoType(MEDIASUBTYPE_RGB565, {1, 2}), "1111 0000 2222 0000"), "22221111");
}

// ---- Sound

TEST(StrictSoundTest, BigEndianPcmHasTheDepthOfItsSubtype) {
    const auto depthOf = [](const GUID& subtype, WORD bits) {
        const auto described = DescribeStrictCodec(test_support::WaveType(subtype, {48000, 2, bits}).Get());
        return described.codecId.empty() ? 0 : *described.audio->bitDepth;
    };
    EXPECT_EQ(depthOf(mediasubtype::kTwos, 16), 16u);
    EXPECT_EQ(depthOf(mediasubtype::kTwos, 24), 24u);
    EXPECT_EQ(depthOf(mediasubtype::kIn24, 16), 24u);
    EXPECT_EQ(depthOf(mediasubtype::kIn32, 0), 32u);
    EXPECT_EQ(depthOf(mediasubtype::kTwos, 8), 0u); // signed here, and not in a track
}

TEST(StrictSoundTest, ATrackOfBigEndianPcmHasOneSubtype) {
    const auto subtypeOf = [](UINT64 depth) {
        media::TrackFacts track;
        track.type = media::kTrackTypeAudio;
        track.codecId = "A_PCM/INT/BIG";
        track.audio.bitDepth = depth;
        const auto types = media::MediaTypesOf(track);
        EXPECT_EQ(types.size(), 1u);
        const auto wave = media::FormatBlock(types.front()).Read<WAVEFORMATEX>();
        EXPECT_EQ(wave->nBlockAlign, depth / 8);
        EXPECT_EQ(wave->nAvgBytesPerSec, 8000 * depth / 8);
        return types.front().subtype;
    };
    EXPECT_EQ(subtypeOf(16), mediasubtype::kTwos);
    EXPECT_EQ(subtypeOf(24), mediasubtype::kIn24);
    EXPECT_EQ(subtypeOf(32), mediasubtype::kIn32);
    EXPECT_EQ(subtypeOf(8), mediasubtype::kPcm); // one byte has no order
}

const std::string kAlacConfig = "00001000001028"
                                "0a0e0200ff0000000000000000"
                                "0000ac44";

TEST(StrictSoundTest, AlacHasItsConfigurationBareAndBelievesIt) {
    const std::string atom = "00000024616c616300000000" + kAlacConfig;
    const std::string named = "0000000c66726d61616c6163" + atom;
    for (const std::string& extra : {kAlacConfig, atom, named, named + "0000000800000000"}) {
        const auto described =
            DescribeStrictCodec(test_support::WaveType(mediasubtype::kAlac, {48000, 1, 24}, FromHex(extra)).Get());
        EXPECT_EQ(described.codecId, "A_ALAC");
        EXPECT_EQ(ToHex(*described.codecPrivate), kAlacConfig) << extra;
        EXPECT_EQ(described.audio->samplingFrequencyHz, 44100u);
        EXPECT_EQ(described.audio->channels, 2u);
        EXPECT_EQ(described.audio->bitDepth, 16u);
    }
}

TEST(StrictSoundTest, AlacWithoutAWholeConfigurationHasNoCodec) {
    const Bytes whole = FromHex(kAlacConfig);
    for (size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(DescribeStrictCodec(test_support::WaveType(mediasubtype::kAlac, {}, cut).Get()).codecId, "") << size;
    }
    for (const size_t place : {size_t{4}, size_t{5}, size_t{9}}) { // version, depth, channels
        Bytes damaged = whole;
        damaged[place] = place == 4 ? 1 : 0;
        EXPECT_EQ(DescribeStrictCodec(test_support::WaveType(mediasubtype::kAlac, {}, damaged).Get()).codecId, "");
    }
}

// ---- Subtitles

// A box of ISO/IEC 14496-12.
std::string Box(const std::string& name, const std::string& content) {
    const Bytes inner = FromHex(content);
    const auto size = static_cast<BYTE>(inner.size() + 8);
    return "000000" + ToHex(Bytes{size}) + ToHex(Bytes(name.begin(), name.end())) + content;
}

std::string AdditionOf(const MediaTypeValue& type, const std::string& hex) {
    const Bytes addition = media::StrictAdditionOf(type.Get(), FromHex(hex));
    return {addition.begin(), addition.end()};
}

const MediaTypeValue kBoxes = test_support::SubtitleType(mediasubtype::kWebVttBoxes, FromHex("574542565454"));

TEST(StrictCueTest, ACuesTextIsTheBlockAndTheRestStandsBesideIt) {
    const std::string cue = Box("vttc", Box("iden", "31") + Box("sttg", "6c696e653a31") + Box("payl", "4869"));
    EXPECT_EQ(Converted(kBoxes, cue), "4869");
    EXPECT_EQ(AdditionOf(kBoxes, cue), "line:1\n1\n");
    const std::string plain = Box("vttc", Box("payl", "4869"));
    EXPECT_EQ(Converted(kBoxes, plain), "4869");
    EXPECT_EQ(AdditionOf(kBoxes, plain), "");
    EXPECT_EQ(AdditionOf(kBoxes, Box("vtta", "4e4f5445") + plain), "\n\nNOTE");
    EXPECT_EQ(DescribeStrictCodec(kBoxes.Get()).maxBlockAdditionId, 1u);
}

TEST(StrictCueTest, CuesOfOneTimeAreJoined) {
    const std::string first = Box("vttc", Box("iden", "31") + Box("payl", "41"));
    const std::string second = Box("vttc", Box("iden", "32") + Box("payl", "42"));
    EXPECT_EQ(Converted(kBoxes, first + second), "410a42");
    EXPECT_EQ(AdditionOf(kBoxes, first + second), "\n1\n");
}

TEST(StrictCueTest, WhatIsNoCueLeavesNothing) {
    EXPECT_EQ(Converted(kBoxes, Box("vtte", "")), "");
    EXPECT_EQ(Converted(kBoxes, "000000ff76747463"), "");
    EXPECT_EQ(Converted(kBoxes, "00000000"), "");
    const std::string whole = Box("vttc", Box("payl", "4869"));
    for (size_t digits = 0; digits < whole.size(); digits += 2) {
        EXPECT_EQ(Converted(kBoxes, whole.substr(0, digits)), "");
        EXPECT_EQ(AdditionOf(kBoxes, whole.substr(0, digits)), "");
    }
}

TEST(StrictCueTest, TheTextAloneIsTakenAsItIs) {
    const MediaTypeValue type = test_support::SubtitleType(mediasubtype::kWebVtt);
    EXPECT_EQ(PrivateOf(type), "574542565454"); // "WEBVTT", which a reader asks for
    EXPECT_FALSE(media::NeedsStrictConversion(type.Get()));
    EXPECT_EQ(AdditionOf(type, Box("vttc", Box("iden", "31"))), "");
}

TEST(StrictDvbTest, ThePagesAreAskedFor) {
    const auto codecOf = [](const char* pages) {
        return DescribeStrictCodec(test_support::SubtitleType(mediasubtype::kDvbSubtitle, FromHex(pages)).Get())
            .codecId;
    };
    EXPECT_EQ(codecOf("00010002"), "S_DVBSUB");
    EXPECT_EQ(codecOf("0001000210"), "S_DVBSUB");
    EXPECT_EQ(codecOf("00010002100001000310"), "S_DVBSUB");
    for (const char* other : {"", "0001", "000100021011"}) {
        EXPECT_EQ(codecOf(other), "") << other;
    }
}

TEST(StrictDvbTest, WhatBelongsToTheTransportGoes) {
    const MediaTypeValue type = test_support::SubtitleType(mediasubtype::kDvbSubtitle, FromHex("00010002"));
    EXPECT_EQ(Converted(type, "2000 0f10aa ff"), "0f10aa");
    EXPECT_EQ(Converted(type, "2000 0f10aa"), "0f10aa");
    EXPECT_EQ(Converted(type, "0f10aa ff"), "0f10aaff");
    EXPECT_EQ(Converted(type, "2000"), "2000");
}

} // namespace

// Pictures as strict files describe them.
#include <cstring>

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "media/interlacing.h"
#include "media/media_types_of.h"
#include "media/strict_fields.h"
#include "media/track_type.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeStrictCodec;
using media::DisplaySize;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::VideoShape;

constexpr GUID kXvid = SubtypeFromFourCC('X', 'V', 'I', 'D');
const Bytes kAvcSps = FromHex("6764000aacd9447b011000000300100000030320f1225960");
const Bytes kAvcPps = FromHex("68ebe3cb22c0");
constexpr const char* kAvcRecord =
    "0164000affe100186764000aacd9447b011000000300100000030320f122596001000668ebe3cb22c0fdf8f800";
const Bytes kHevcVps = FromHex("40010c01ffff0408000003009c0800000300001e959809");
const Bytes kHevcSps = FromHex("4201010408000003009c0800000300001e900410626cb2b35c995e02d0100000030010000003019080");
constexpr const char* kHevcHead = "0104080000009c08000000001ef000fcfffafa00000f";

std::string DisplayOf(const VideoShape& shape) {
    const auto described = DescribeStrictCodec(test_support::VideoInfo2Type(kXvid, shape).Get());
    if (!described.video) {
        return "no picture";
    }
    const auto& video = *described.video;
    const std::string pixels = std::to_string(video.pixelWidth) + 'x' + std::to_string(video.pixelHeight);
    return video.display
               ? pixels + " as " + std::to_string(video.display->width) + 'x' + std::to_string(video.display->height)
               : pixels;
}

std::string PrivateOf(const MediaTypeValue& type) {
    const CodecDescription described = DescribeStrictCodec(type.Get());
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

MediaTypeValue WithInterlaceFlags(DWORD flags) {
    MediaTypeValue type = test_support::VideoInfo2Type(kXvid);
    reinterpret_cast<VIDEOINFOHEADER2*>(type->pbFormat)->dwInterlaceFlags = flags;
    return type;
}

std::string FieldsOf(DWORD flags) {
    const auto video = *DescribeStrictCodec(WithInterlaceFlags(flags).Get()).video;
    return (video.flagInterlaced ? std::to_string(*video.flagInterlaced) : "-") + " " +
           (video.fieldOrder ? std::to_string(*video.fieldOrder) : "-");
}

TEST(StrictVideoTest, TheDisplaySizeIsInPixelsAndLeftOutWhereTheyAreSquare) {
    EXPECT_EQ(DisplayOf({720, 576, 400000, 16, 9}), "720x576 as 1024x576");
    EXPECT_EQ(DisplayOf({720, 576, 400000, 5, 4}), "720x576");
    EXPECT_EQ(DisplayOf({720, 480, 400000, 4, 3}), "720x480 as 720x540");
    EXPECT_EQ(DisplayOf({1440, 1080, 400000, 1920, 1080}), "1440x1080 as 1920x1080");
    EXPECT_EQ(DisplayOf({320, 240, 400000, 320, 240}), "320x240");
}

TEST(StrictVideoTest, TheStretchedSideIsRoundedToTheNearestPixel) {
    EXPECT_EQ(DisplayOf({180, 144, 400000, 20, 11}), "180x144 as 262x144");
    EXPECT_EQ(DisplayOf({99, 100, 400000, 1000, 1001}), "99x100 as 100x100");
    EXPECT_EQ(DisplayOf({1000, 1000, 400000, 10001, 10000}), "1000x1000"); // not a pixel more
}

TEST(StrictVideoTest, APairWithAZeroOrAnAbsurdOneSaysNothing) {
    EXPECT_EQ(DisplayOf({320, 240, 400000, 0, 0}), "320x240");
    EXPECT_EQ(DisplayOf({320, 240, 400000, 16, 0}), "320x240");
    EXPECT_EQ(DisplayOf({320, 240, 400000, 0, 9}), "320x240");
    EXPECT_EQ(DisplayOf({320, 240, 400000, 0xffffffff, 1}), "320x240");
    EXPECT_EQ(DisplayOf({INT32_MAX, INT32_MAX, 400000, 0xffffffff, 0xfffffffe}), "2147483647x2147483647");
}

TEST(StrictVideoTest, ATopDownPictureIsAsHighAsAnother) {
    EXPECT_EQ(DisplayOf({720, -576, 400000, 16, 9}), "720x576 as 1024x576");
    EXPECT_EQ(DisplayOf({-320, 240, 400000, 4, 3}), "320x240");
    EXPECT_EQ(DisplayOf({320, INT32_MIN, 400000, 0, 0}), "320x2147483648");
}

TEST(StrictVideoTest, APictureWithoutASizeHasNoCodec) {
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfo2Type(kXvid, {0, 240}).Get()).codecId, "");
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfo2Type(kXvid, {320, 0}).Get()).codecId, "");
    EXPECT_EQ(DisplayOf({0, 240}), "no picture");
}

TEST(StrictVideoTest, APlainBlockHasSquarePixels) {
    const auto described = DescribeStrictCodec(test_support::VideoInfoType(kXvid, {320, -240}).Get());
    EXPECT_EQ(described.video->pixelHeight, 240u);
    EXPECT_FALSE(described.video->display);
    EXPECT_EQ(described.lacing, false);
    EXPECT_EQ(described.defaultDurationNs, 40'000'000u);
}

TEST(StrictVideoTest, ADurationThatIsNoFramesIsLeftOut) {
    EXPECT_EQ(media::FrameDurationNs(0), std::nullopt);
    EXPECT_EQ(media::FrameDurationNs(-400000), std::nullopt);
    EXPECT_EQ(media::FrameDurationNs(INT64_MAX), std::nullopt);
    EXPECT_EQ(media::FrameDurationNs(INT64_MIN), std::nullopt);
    EXPECT_EQ(media::FrameDurationNs(36'000'000'000'000), 3'600'000'000'000'000u); // 1000 hours
    EXPECT_EQ(media::FrameDurationNs(36'000'000'000'001), std::nullopt);
    EXPECT_FALSE(DescribeStrictCodec(test_support::VideoInfo2Type(kXvid, {320, 240, 0}).Get()).defaultDurationNs);
}

TEST(StrictVideoTest, TheDurationOfAUsualRateIsExact) {
    EXPECT_EQ(media::FrameDurationNs(400000), 40'000'000u);
    EXPECT_EQ(media::FrameDurationNs(333666), 33'366'667u); // 30000/1001, cut
    EXPECT_EQ(media::FrameDurationNs(333667), 33'366'667u); // and rounded
    EXPECT_EQ(media::FrameDurationNs(417083), 41'708'333u);
    EXPECT_EQ(media::FrameDurationNs(417084), 41'708'400u); // neither
    EXPECT_EQ(media::FrameDurationNs(416666), 41'666'667u);
    EXPECT_EQ(media::FrameDurationNs(166833), 16'683'333u);
    EXPECT_EQ(media::FrameDurationNs(10000000), 1'000'000'000u);
    EXPECT_EQ(media::FrameDurationNs(10010000), 1'001'000'000u);
    EXPECT_EQ(media::FrameDurationNs(123450), 12'345'000u);
}

TEST(StrictVideoTest, FieldsAreToldAsTheBlocksFlagsHaveThem) {
    EXPECT_EQ(FieldsOf(0), "- -");
    EXPECT_EQ(FieldsOf(AMINTERLACE_Field1First | AMINTERLACE_1FieldPerSample), "- -"); // not said to be interlaced
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced), "1 14");
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced | AMINTERLACE_Field1First), "1 9");
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced | AMINTERLACE_Field1First | AMINTERLACE_FieldPatBothRegular), "1 9");
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced | AMINTERLACE_Field1First | AMINTERLACE_FieldPatBothIrregular), "1 -");
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced | AMINTERLACE_1FieldPerSample), "1 6");
    EXPECT_EQ(FieldsOf(AMINTERLACE_IsInterlaced | AMINTERLACE_1FieldPerSample | AMINTERLACE_Field1First), "1 1");
    EXPECT_FALSE(DescribeStrictCodec(test_support::VideoInfoType(kXvid).Get()).video->flagInterlaced);
}

TEST(StrictVideoTest, AvcHasAWholeRecordHoweverItsSetsCome) {
    const auto byteStream =
        test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, ByteStream({kAvcSps, kAvcPps}), 1, 2, 0);
    EXPECT_EQ(DescribeStrictCodec(byteStream.Get()).codecId, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(PrivateOf(byteStream), kAvcRecord);
    const Bytes lengths = LengthPrefixed({kAvcSps, kAvcPps});
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, lengths, 1, 2, 4)), kAvcRecord);
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, FromHex(kAvcRecord), 1, 2, 4)),
              kAvcRecord);
}

TEST(StrictVideoTest, TheLengthSizeIsTheSamplesOwnAndFourWhereStartCodesStood) {
    const Bytes lengths = LengthPrefixed({kAvcSps});
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, lengths, 1, 2, 2)).substr(8, 2), "fd");
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, lengths, 1, 2, 0)).substr(8, 2), "ff");
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, ByteStream({kAvcSps}), 1, 2, 2))
                  .substr(8, 2),
              "ff");
}

TEST(StrictVideoTest, WithoutSetsTheBlockTellsProfileAndLevel) {
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, {}, 0x1234564d, 0xabcdef28, 4)),
              "014d0028ffe000");
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, {}, 2, 93, 0)),
              "0102000000000000000000005df000fcfdf8f800000b00");
}

TEST(StrictVideoTest, ADamagedSequenceHeaderHasNoCodec) {
    for (const GUID& subtype : {mediasubtype::kAvc1, mediasubtype::kH264AnnexB, mediasubtype::kHvc1}) {
        const auto type = test_support::Mpeg2VideoType(subtype, {}, FromHex("0100 67"));
        EXPECT_EQ(DescribeStrictCodec(type.Get()).codecId, "");
    }
}

TEST(StrictVideoTest, HevcHasAWholeRecordHoweverItsSetsCome) {
    const auto byteStream =
        test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, ByteStream({kHevcVps, kHevcSps}));
    const std::string record = PrivateOf(byteStream);
    EXPECT_EQ(record.substr(0, 44), kHevcHead);
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kHvc1, {}, FromHex(record))), record);
    std::string older = record;
    older[1] = '0';
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kHvc1, {}, FromHex(older))), record);
}

TEST(StrictVideoTest, AnEmptySequenceHeaderOfAnotherCodecIsLeftOut) {
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(MEDIASUBTYPE_MPEG2_VIDEO, {}, {})), "none");
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(MEDIASUBTYPE_MPEG2_VIDEO, {}, FromHex("000001b3"))), "000001b3");
    EXPECT_EQ(PrivateOf(test_support::Mpeg1VideoType({}, {})), "none");
}

TEST(StrictVideoTest, TheHeadersOfTheoraAreLaced) {
    const Bytes head = FromHex("80 7468656f7261 03");
    const Bytes comment = FromHex("81aa");
    const Bytes setup = FromHex("82bbcc");
    const std::string laced = "02"
                              "08"
                              "02" +
                              ToHex(Concat({head, comment, setup}));
    EXPECT_EQ(
        PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kTheora, {}, LengthPrefixed({head, comment, setup}))),
        laced);
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kTheora, {}, FromHex(laced))), laced);
    const Bytes tooShort = LengthPrefixed({head, comment});
    EXPECT_EQ(PrivateOf(test_support::Mpeg2VideoType(mediasubtype::kTheora, {}, tooShort)), ToHex(tooShort));
}

TEST(StrictVideoTest, VpCodecsAreThemselvesInEitherBlock) {
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfoType(mediasubtype::kVp8).Get()).codecId, "V_VP8");
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfo2Type(mediasubtype::kVp8).Get()).codecId, "V_VP8");
    EXPECT_EQ(DescribeStrictCodec(test_support::VideoInfoType(mediasubtype::kVp9).Get()).codecId, "V_VP9");
    const auto described =
        DescribeStrictCodec(test_support::VideoInfo2Type(mediasubtype::kVp9, {720, 576, 0, 16, 9}).Get());
    EXPECT_EQ(described.codecId, "V_VP9");
    EXPECT_EQ(described.video->display->width, 1024u);
}

TEST(StrictVideoTest, OfVp9FeaturesAloneAreKept) {
    EXPECT_EQ(PrivateOf(test_support::VideoInfo2Type(mediasubtype::kVp9, {}, FromHex("010100 02010a 030108"))),
              "01010002010a030108");
    for (const char* other : {"", "01", "000100", "050100", "010200", "0101000201", "76706343 01000000"}) {
        EXPECT_EQ(PrivateOf(test_support::VideoInfo2Type(mediasubtype::kVp9, {}, FromHex(other))), "none") << other;
    }
}

std::string FieldsFromTrack(UINT64 flagInterlaced, UINT64 fieldOrder) {
    media::VideoFacts facts;
    facts.flagInterlaced = flagInterlaced;
    facts.fieldOrder = fieldOrder;
    return FieldsOf(media::InterlaceFlagsOf(facts));
}

TEST(StrictVideoTest, WhatATrackTellsOfItsFieldsComesBack) {
    for (const UINT64 order : {1, 6, 9, 14}) {
        EXPECT_EQ(FieldsFromTrack(1, order), "1 " + std::to_string(order));
    }
    EXPECT_EQ(FieldsFromTrack(1, 2), "1 -"); // not known
    EXPECT_EQ(FieldsFromTrack(1, 77), "1 -");
    EXPECT_EQ(FieldsFromTrack(2, 9), "2 -"); // progressive: the order is of no use
    EXPECT_EQ(FieldsFromTrack(0, 9), "- -");
    EXPECT_EQ(FieldsFromTrack(3, 9), "- -");
}

TEST(StrictVideoTest, EveryBlockThatHasInterlaceFlagsTakesThoseOfTheTrack) {
    media::TrackFacts track;
    track.type = media::kTrackTypeVideo;
    track.codecId = "V_MPEG2";
    track.video.pixelWidth = 320;
    track.video.pixelHeight = 240;
    track.video.flagInterlaced = 1;
    track.video.fieldOrder = 9;
    const auto types = media::MediaTypesOf(track);
    ASSERT_EQ(types.size(), 1u);
    const auto video = DescribeStrictCodec(types[0]).video;
    EXPECT_EQ(video->flagInterlaced, 1u);
    EXPECT_EQ(video->fieldOrder, 9u);
}

// ---- Video for Windows

BITMAPINFOHEADER BitmapOf(const MediaTypeValue& type) {
    const auto described = DescribeStrictCodec(type.Get());
    EXPECT_EQ(described.codecId, "V_MS/VFW/FOURCC");
    BITMAPINFOHEADER bitmap{};
    EXPECT_GE(described.codecPrivate->size(), sizeof(bitmap));
    std::memcpy(&bitmap, described.codecPrivate->data(), sizeof(bitmap));
    return bitmap;
}

MediaTypeValue WithCompression(MediaTypeValue type, DWORD compression) {
    reinterpret_cast<VIDEOINFOHEADER*>(type->pbFormat)->bmiHeader.biCompression = compression;
    return type;
}

TEST(StrictVideoTest, BothPlainBlocksHandTheBytesBehindTheBitmapHeaderOn) {
    const Bytes extra = FromHex("112233");
    const auto type = WithCompression(test_support::VideoInfoType(kXvid, {320, -240}, extra), kXvid.Data1);
    EXPECT_EQ(PrivateOf(type).substr(80), "112233");
    EXPECT_EQ(BitmapOf(type).biSize, 43u);
    EXPECT_EQ(BitmapOf(type).biHeight, -240); // as the codec has it
    EXPECT_EQ(PrivateOf(test_support::VideoInfo2Type(kXvid, {}, extra)).substr(80), "112233");
    EXPECT_EQ(BitmapOf(WithCompression(test_support::VideoInfoType(kXvid), kXvid.Data1)).biSize, 40u);
}

TEST(StrictVideoTest, APaletteIsNoPartOfTheBitmapHeader) {
    const auto type = WithCompression(test_support::VideoInfoType(kXvid, {}, Bytes(1024, 1)), BI_RGB);
    EXPECT_EQ(BitmapOf(type).biSize, 40u);
    EXPECT_EQ(PrivateOf(type).size(), 2 * (40u + 1024));
}

TEST(StrictVideoTest, ABlockThatIsTooShortHasNoCodec) {
    for (MediaTypeValue type :
         {test_support::VideoInfoType(kXvid), test_support::VideoInfo2Type(kXvid),
          test_support::VideoInfoType(mediasubtype::kVp9), test_support::VideoInfo2Type(mediasubtype::kVp8),
          test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, LengthPrefixed({kAvcSps}))}) {
        EXPECT_NE(DescribeStrictCodec(type.Get()).codecId, "");
        const ULONG whole = type->cbFormat;
        type->cbFormat = whole - 1;
        EXPECT_EQ(DescribeStrictCodec(type.Get()).codecId, "") << whole;
        type->cbFormat = 0;
        EXPECT_EQ(DescribeStrictCodec(type.Get()).codecId, "") << whole;
    }
}

} // namespace

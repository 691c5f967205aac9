#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeVideoCodec;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::Mpeg1VideoType;
using test_support::Mpeg2VideoType;
using test_support::VideoInfo2Type;
using test_support::VideoInfoType;
using test_support::VideoShape;

const Bytes kHeader = FromHex("000001b3 16 00 f0");
const Bytes kExtra = FromHex("0102030405");
constexpr GUID kRgb24{0xe436eb7d, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
constexpr GUID kCinepak = SubtypeFromFourCC('c', 'v', 'i', 'd');

// 720 by 576 at 25 pictures in a second, 16:9.
constexpr VideoShape kShape{720, 576, 400000, 16, 9};
constexpr UINT64 kDurationNs = 40'000'000;

std::string IdOf(const MediaTypeValue& type) {
    return DescribeVideoCodec(type.Get()).codecId;
}

std::string PrivateOf(const MediaTypeValue& type) {
    const CodecDescription described = DescribeVideoCodec(type.Get());
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

// The 40 bytes of the block's bitmap header, which lies at that offset.
std::string BitmapHeaderOf(const MediaTypeValue& type, size_t offset) {
    return ToHex(type.Format().subspan(offset, 40));
}

constexpr size_t kBitmapOffsetInVideoInfo = 48;
constexpr size_t kBitmapOffsetInVideoInfo2 = 72;

void ExpectPicture(const MediaTypeValue& type, UINT64 displayWidth, UINT64 displayHeight) {
    const CodecDescription described = DescribeVideoCodec(type.Get());
    ASSERT_TRUE(described.video.has_value());
    EXPECT_EQ(described.defaultDurationNs, kDurationNs);
    EXPECT_EQ(described.video->pixelWidth, 720u);
    EXPECT_EQ(described.video->pixelHeight, 576u);
    ASSERT_TRUE(described.video->display.has_value());
    EXPECT_EQ(described.video->display->width, displayWidth);
    EXPECT_EQ(described.video->display->height, displayHeight);
    EXPECT_FALSE(described.audio.has_value());
}

// ---- The rows ----------------------------------------------------------------------------------------------------

TEST(VideoCodecTest, Mpeg1) {
    const MediaTypeValue type = Mpeg1VideoType(kShape, kHeader);
    EXPECT_EQ(IdOf(type), "V_MPEG1");
    EXPECT_EQ(PrivateOf(type), ToHex(kHeader));
    ExpectPicture(type, 720, 576);
}

TEST(VideoCodecTest, Theora) {
    const MediaTypeValue type = Mpeg2VideoType(mediasubtype::kTheora, kShape, kHeader);
    EXPECT_EQ(IdOf(type), "V_THEORA");
    EXPECT_EQ(PrivateOf(type), ToHex(kHeader));
    ExpectPicture(type, 16, 9);
}

TEST(VideoCodecTest, Mpeg2) {
    const MediaTypeValue type = Mpeg2VideoType(MEDIASUBTYPE_MPEG2_VIDEO, kShape, kHeader);
    EXPECT_EQ(IdOf(type), "V_MPEG2");
    EXPECT_EQ(PrivateOf(type), ToHex(kHeader));
    ExpectPicture(type, 16, 9);
}

TEST(VideoCodecTest, Mpeg4Part2) {
    const MediaTypeValue type = Mpeg2VideoType(mediasubtype::kMp4v, kShape, kHeader);
    EXPECT_EQ(IdOf(type), "V_MPEG4/ISO/ASP");
    EXPECT_EQ(PrivateOf(type), ToHex(kHeader));
    ExpectPicture(type, 16, 9);
}

TEST(VideoCodecTest, H264InBothPackagings) {
    const MediaTypeValue lengths = Mpeg2VideoType(mediasubtype::kAvc1, kShape, FromHex("0002 6764 0001 68"), 100, 31);
    const MediaTypeValue stream =
        Mpeg2VideoType(mediasubtype::kH264AnnexB, kShape, FromHex("00000001 6764 00000001 68"), 100, 31);
    for (const MediaTypeValue* type : {&lengths, &stream}) {
        EXPECT_EQ(IdOf(*type), "V_MPEG4/ISO/AVC");
        EXPECT_EQ(PrivateOf(*type), "0164001f0301"
                                    "00026764"
                                    "01000168");
        ExpectPicture(*type, 16, 9);
    }
}

TEST(VideoCodecTest, H265InBothPackagings) {
    const MediaTypeValue record = Mpeg2VideoType(mediasubtype::kHvc1, kShape, kHeader);
    EXPECT_EQ(IdOf(record), "V_MPEGH/ISO/HEVC");
    EXPECT_EQ(PrivateOf(record), ToHex(kHeader));
    ExpectPicture(record, 16, 9);

    const MediaTypeValue stream = Mpeg2VideoType(mediasubtype::kHevcAnnexB, kShape, FromHex("00000001 4001"));
    EXPECT_EQ(IdOf(stream), "V_MPEGH/ISO/HEVC");
    EXPECT_EQ(PrivateOf(stream).size(), 2u * (23 + 5 + 2));
    ExpectPicture(stream, 16, 9);
}

TEST(VideoCodecTest, Vp8HasNoPrivateDataAndNoDisplaySize) {
    const MediaTypeValue type = VideoInfoType(mediasubtype::kVp8, kShape, kExtra);
    const CodecDescription described = DescribeVideoCodec(type.Get());
    EXPECT_EQ(described.codecId, "V_VP8");
    EXPECT_FALSE(described.codecPrivate.has_value());
    EXPECT_EQ(described.defaultDurationNs, kDurationNs);
    EXPECT_EQ(described.video.value().pixelWidth, 720u);
    EXPECT_EQ(described.video.value().pixelHeight, 576u);
    EXPECT_FALSE(described.video.value().display.has_value());
}

TEST(VideoCodecTest, Vp9KeepsTheBytesBehindItsStructureAndHasNoDisplaySize) {
    const MediaTypeValue type = VideoInfo2Type(mediasubtype::kVp9, kShape, kExtra);
    const CodecDescription described = DescribeVideoCodec(type.Get());
    EXPECT_EQ(described.codecId, "V_VP9");
    EXPECT_EQ(PrivateOf(type), ToHex(kExtra));
    EXPECT_EQ(PrivateOf(VideoInfo2Type(mediasubtype::kVp9, kShape)), ""); // present, and empty
    EXPECT_EQ(described.defaultDurationNs, kDurationNs);
    EXPECT_EQ(described.video.value().pixelWidth, 720u);
    EXPECT_FALSE(described.video.value().display.has_value());
}

TEST(VideoCodecTest, OtherVideoInfoKeepsTheBitmapHeaderOnly) {
    const MediaTypeValue type = VideoInfoType(kCinepak, kShape, kExtra);
    EXPECT_EQ(IdOf(type), "V_MS/VFW/FOURCC");
    EXPECT_EQ(PrivateOf(type), BitmapHeaderOf(type, kBitmapOffsetInVideoInfo));
    ExpectPicture(type, 720, 576);
    EXPECT_EQ(IdOf(VideoInfoType(kRgb24, kShape)), "V_MS/VFW/FOURCC");
}

TEST(VideoCodecTest, OtherVideoInfo2KeepsTheBitmapHeaderAndTheBytesBehindTheStructure) {
    const MediaTypeValue type = VideoInfo2Type(kCinepak, kShape, kExtra);
    EXPECT_EQ(IdOf(type), "V_MS/VFW/FOURCC");
    EXPECT_EQ(PrivateOf(type), BitmapHeaderOf(type, kBitmapOffsetInVideoInfo2) + ToHex(kExtra));
    ExpectPicture(type, 16, 9);
}

TEST(VideoCodecTest, EveryRowSwitchesLacingOff) {
    for (const MediaTypeValue& type :
         {Mpeg1VideoType(kShape, kHeader), Mpeg2VideoType(mediasubtype::kAvc1, kShape, {}),
          VideoInfoType(mediasubtype::kVp8), VideoInfo2Type(mediasubtype::kVp9), VideoInfoType(kCinepak),
          Mpeg2VideoType(kCinepak, kShape, {}), test_support::WaveType(mediasubtype::kPcm)}) {
        EXPECT_EQ(DescribeVideoCodec(type.Get()).lacing, false);
    }
}

// ---- Which row a type gets ---------------------------------------------------------------------------------------

TEST(VideoCodecTest, H264WithVideoInfoIsAVfwTrackWithFortyBytesOfBitmapHeader) {
    const MediaTypeValue type = VideoInfoType(mediasubtype::kAvc1, kShape, kExtra);
    EXPECT_EQ(IdOf(type), "V_MS/VFW/FOURCC");
    EXPECT_EQ(PrivateOf(type), BitmapHeaderOf(type, kBitmapOffsetInVideoInfo));
    EXPECT_EQ(PrivateOf(type).size(), 2u * 40);
}

TEST(VideoCodecTest, Vp8WithVideoInfo2AndVp9WithVideoInfoAreVfwTracks) {
    EXPECT_EQ(IdOf(VideoInfo2Type(mediasubtype::kVp8)), "V_MS/VFW/FOURCC");
    EXPECT_EQ(IdOf(VideoInfoType(mediasubtype::kVp9)), "V_MS/VFW/FOURCC");
}

TEST(VideoCodecTest, TheoraIsTheoraOnlyWithMpeg2VideoInfo) {
    EXPECT_EQ(IdOf(Mpeg2VideoType(mediasubtype::kTheora, {}, {})), "V_THEORA");
    EXPECT_EQ(IdOf(VideoInfoType(mediasubtype::kTheora)), "V_MS/VFW/FOURCC");
    EXPECT_EQ(IdOf(VideoInfo2Type(mediasubtype::kTheora)), "V_MS/VFW/FOURCC");
}

TEST(VideoCodecTest, EverySubtypeOfTheOtherRowsIsAVfwTrackWithAVideoInfoBlock) {
    for (const GUID& subtype :
         {mediasubtype::kAvc1, mediasubtype::kH264AnnexB, mediasubtype::kHvc1, mediasubtype::kHevcAnnexB,
          mediasubtype::kMp4v, mediasubtype::kTheora, MEDIASUBTYPE_MPEG2_VIDEO, MEDIASUBTYPE_MPEG1Payload}) {
        EXPECT_EQ(IdOf(VideoInfoType(subtype)), "V_MS/VFW/FOURCC");
        EXPECT_EQ(IdOf(VideoInfo2Type(subtype)), "V_MS/VFW/FOURCC");
    }
}

TEST(VideoCodecTest, AnythingElseHasNoMapping) {
    for (const GUID& subtype : {kCinepak, kRgb24, mediasubtype::kVp8, mediasubtype::kVp9, MEDIASUBTYPE_MPEG1Payload}) {
        const CodecDescription described = DescribeVideoCodec(Mpeg2VideoType(subtype, kShape, kHeader).Get());
        EXPECT_EQ(described.codecId, "");
        EXPECT_FALSE(described.codecPrivate.has_value());
        EXPECT_FALSE(described.video.has_value());
        EXPECT_FALSE(described.defaultDurationNs.has_value());
    }
    MediaTypeValue mpeg1 = Mpeg1VideoType(kShape, kHeader);
    mpeg1->subtype = MEDIASUBTYPE_MPEG2_VIDEO;
    EXPECT_EQ(IdOf(mpeg1), "");
    MediaTypeValue noFormat = VideoInfoType(kCinepak);
    noFormat->formattype = GUID_NULL;
    EXPECT_EQ(IdOf(noFormat), "");
    MediaTypeValue notVideo = VideoInfoType(kCinepak);
    notVideo->majortype = MEDIATYPE_Audio;
    EXPECT_EQ(IdOf(notVideo), "");
}

// ---- Fields ------------------------------------------------------------------------------------------------------

TEST(VideoCodecTest, AnAspectRatioOfFourToThreeIsTheDisplaySizeFourByThree) {
    const MediaTypeValue type = VideoInfo2Type(kCinepak, {640, 480, 400000, 4, 3});
    const auto display = DescribeVideoCodec(type.Get()).video.value().display.value();
    EXPECT_EQ(display.width, 4u);
    EXPECT_EQ(display.height, 3u);
}

TEST(VideoCodecTest, ATopDownPictureKeepsItsNegativeHeightAsStored) {
    const CodecDescription described = DescribeVideoCodec(VideoInfoType(kRgb24, {320, -240, 400000, 4, 3}).Get());
    EXPECT_EQ(described.video.value().pixelHeight, 0xffffffffffffff10ULL);
    EXPECT_EQ(described.video.value().display.value().height, 0xffffffffffffff10ULL);
    EXPECT_EQ(described.video.value().pixelWidth, 320u);
}

TEST(VideoCodecTest, TheFrameTimeIsCountedInNanoseconds) {
    const auto durationOf = [](REFERENCE_TIME time) {
        return DescribeVideoCodec(VideoInfoType(kCinepak, {320, 240, time, 4, 3}).Get()).defaultDurationNs.value();
    };
    EXPECT_EQ(durationOf(333667), 33'366'700u);
    EXPECT_EQ(durationOf(0), 0u);
    EXPECT_EQ(durationOf(10'000'000'000), 1'000'000'000'000u); // one picture in 1000 s
    // Nonsense stays nonsense, but harmless.
    EXPECT_EQ(durationOf(-1), 0xffffffffffffff9cULL);
    EXPECT_EQ(durationOf(0x7fffffffffffffffLL), 0xffffffffffffff9cULL);
}

} // namespace

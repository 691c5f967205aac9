// AV1 in strict files: its codec and private data, its samples, and where decoding can begin.
#include "media/av1_stream.h"

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "media/media_types_of.h"
#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::DescribeStrictCodec;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;

constexpr const char* kRecord = "81000c000a0a0000000337f8e6d7c802";
constexpr const char* kHeader = "0a0a0000000337f8e6d7c802"; // of the record
constexpr const char* kKeyFrame = "3203100102";
constexpr const char* kInterFrame = "32023003";

MediaTypeValue Plain(const std::string& extra = {}) {
    return test_support::VideoInfoType(mediasubtype::kAv01, {}, FromHex(extra.c_str()));
}

MediaTypeValue Large(const std::string& extra = {}) {
    return test_support::VideoInfo2Type(mediasubtype::kAv01, {}, FromHex(extra.c_str()));
}

std::string PrivateOf(const MediaTypeValue& type) {
    const auto described = DescribeStrictCodec(type.Get());
    EXPECT_EQ(described.codecId, "V_AV1");
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

bool IsKeyframe(const std::string& hex, bool isSyncPoint) {
    return media::IsAv1Keyframe(FromHex(hex.c_str()), isSyncPoint);
}

TEST(Av1StreamTest, BothBlocksBecomeACodecWithARecord) {
    for (const char* extra : {kRecord, kHeader}) {
        EXPECT_EQ(PrivateOf(Plain(extra)), kRecord);
        EXPECT_EQ(PrivateOf(Large(extra)), kRecord);
        EXPECT_EQ(media::LatePrivateRoom(Large(extra).Get()), 0u);
    }
}

TEST(Av1StreamTest, ATypeWithoutTheHeaderLeavesRoomForIt) {
    for (const char* extra : {"", "81000c00", "00112233", "81000c000a0a00000003"}) {
        EXPECT_EQ(PrivateOf(Plain(extra)), "none") << extra;
        EXPECT_EQ(media::LatePrivateRoom(Plain(extra).Get()), 256u) << extra;
    }
    const Bytes keyframe = FromHex((std::string(kHeader) + kKeyFrame).c_str());
    ASSERT_TRUE(media::LatePrivateOf(keyframe));
    EXPECT_EQ(ToHex(*media::LatePrivateOf(keyframe)), kRecord);
    EXPECT_FALSE(media::LatePrivateOf(FromHex(kKeyFrame)));
    EXPECT_EQ(media::LatePrivateRoom(test_support::VideoInfoType(mediasubtype::kVp8).Get()), 0u);
}

TEST(Av1StreamTest, CompatibleFilesKnowNothingOfIt) {
    EXPECT_EQ(media::DescribeCodec(Plain(kHeader).Get()).codecId, "V_MS/VFW/FOURCC");
    EXPECT_EQ(media::DescribeCodec(Large(kHeader).Get()).codecId, "V_MS/VFW/FOURCC");
    const Bytes sample = FromHex("1200 3203100102");
    EXPECT_EQ(media::ConvertPayload(Large().Get(), sample), sample);
}

TEST(Av1StreamTest, SamplesLoseTheirDelimitersAndGetSizes) {
    const MediaTypeValue type = Large(kHeader);
    EXPECT_TRUE(media::NeedsStrictConversion(type.Get()));
    Bytes sample = FromHex("1200 3203100102");
    EXPECT_EQ(ToHex(media::ConvertStrictPayload(type.Get(), sample)), kKeyFrame);
    const auto left = media::ConvertStrictInPlace(type.Get(), sample);
    ASSERT_TRUE(left);
    EXPECT_EQ(ToHex(Bytes(left->begin(), left->end())), kKeyFrame);
    Bytes withoutSize = FromHex("1200 30100102");
    EXPECT_FALSE(media::ConvertStrictInPlace(type.Get(), withoutSize));
    EXPECT_EQ(ToHex(media::ConvertStrictPayload(type.Get(), withoutSize)), kKeyFrame);
}

TEST(Av1StreamTest, KeyframesAreWhatTheUnitsSay) {
    for (const bool isSyncPoint : {false, true}) {
        EXPECT_TRUE(IsKeyframe(std::string(kHeader) + kKeyFrame, isSyncPoint));
        EXPECT_FALSE(IsKeyframe(std::string(kHeader) + kInterFrame, isSyncPoint));
        EXPECT_EQ(IsKeyframe(kKeyFrame, isSyncPoint), isSyncPoint) << "the header comes from elsewhere";
        EXPECT_EQ(IsKeyframe("ffff", isSyncPoint), isSyncPoint);
    }
}

TEST(Av1StreamTest, ATrackComesBackWithItsRecord) {
    media::TrackFacts track;
    track.type = media::kTrackTypeVideo;
    track.codecId = "V_AV1";
    track.codecPrivate = FromHex(kRecord);
    track.video.pixelWidth = 128;
    track.video.pixelHeight = 72;
    const auto types = media::MediaTypesOf(track);
    ASSERT_EQ(types.size(), 1u);
    EXPECT_EQ(types[0].subtype, mediasubtype::kAv01);
    EXPECT_EQ(types[0].formattype, FORMAT_VideoInfo2);
    const auto described = DescribeStrictCodec(types[0]);
    EXPECT_EQ(described.codecId, "V_AV1");
    EXPECT_EQ(ToHex(described.codecPrivate.value_or(Bytes())), kRecord);
    EXPECT_EQ(described.video.value_or(media::VideoDescription()).pixelWidth, 128u);
}

} // namespace

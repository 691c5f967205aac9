#include <gtest/gtest.h>

#include "media/codec_description.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeAudioCodec;
using mkv_test::Bytes;
using mkv_test::Concat;
using mkv_test::ToHex;
using test_support::AudioShape;
using test_support::MediaTypeValue;
using test_support::VorbisType;

constexpr AudioShape kShape{48000, 2, 16, 0};
constexpr size_t kHeaderSizesOffset = 12;

Bytes PrivateOfSizes(size_t first, size_t second, size_t third) {
    const MediaTypeValue type = VorbisType(kShape, {Bytes(first, 1), Bytes(second, 3), Bytes(third, 5)});
    return DescribeAudioCodec(type.Get()).codecPrivate.value();
}

TEST(VorbisCodecTest, HeadersOf30And3000And4000BytesBeginWithTwoThirtyElevenTimes255And195) {
    const Bytes lacing = Concat({{2, 30}, Bytes(11, 255), {195}});
    const Bytes headers = Concat({Bytes(30, 1), Bytes(3000, 3), Bytes(4000, 5)});
    EXPECT_EQ(PrivateOfSizes(30, 3000, 4000), Concat({lacing, headers}));
}

TEST(VorbisCodecTest, ASizeOf255TakesALacingByteMore) {
    EXPECT_EQ(PrivateOfSizes(254, 255, 0), Concat({{2, 254, 255, 0}, Bytes(254, 1), Bytes(255, 3)}));
    EXPECT_EQ(PrivateOfSizes(255, 256, 1), Concat({{2, 255, 0, 255, 1}, Bytes(255, 1), Bytes(256, 3), {5}}));
    EXPECT_EQ(PrivateOfSizes(510, 0, 0), Concat({{2, 255, 255, 0, 0}, Bytes(510, 1)}));
}

TEST(VorbisCodecTest, TheTotalLengthIsThatOfItsParts) {
    for (const size_t first : {0u, 1u, 254u, 255u, 256u, 1000u}) {
        for (const size_t second : {0u, 255u, 509u, 510u, 70000u}) {
            EXPECT_EQ(PrivateOfSizes(first, second, 77).size(), 3 + first / 255 + second / 255 + first + second + 77);
        }
    }
}

TEST(VorbisCodecTest, FieldsComeFromTheVorbisBlockWithoutBitDepth) {
    const CodecDescription described = DescribeAudioCodec(VorbisType(kShape, {Bytes{1}, Bytes{2}, Bytes{3}}).Get());
    EXPECT_EQ(described.codecId, "A_VORBIS");
    EXPECT_EQ(described.audio.value().samplingFrequencyHz, 48000u);
    EXPECT_EQ(described.audio.value().channels, 2u);
    EXPECT_FALSE(described.audio.value().bitDepth.has_value());
    EXPECT_EQ(described.lacing, true);
    EXPECT_EQ(ToHex(described.codecPrivate.value()), "020101010203");
}

TEST(VorbisCodecTest, BytesBehindTheHeadersDoNotMatter) {
    MediaTypeValue type = VorbisType(kShape, {Bytes{1}, Bytes{2}, Bytes{3, 9, 9}});
    type->pbFormat[kHeaderSizesOffset + 8] = 1;
    EXPECT_EQ(ToHex(DescribeAudioCodec(type.Get()).codecPrivate.value()), "020101010203");
}

TEST(VorbisCodecTest, HeaderSizesThatPointOutsideTheBlockAreAnUnsupportedCodec) {
    for (size_t header = 0; header < 3; ++header) {
        for (const BYTE highByte : {BYTE{0}, BYTE{0x7f}, BYTE{0xff}}) {
            MediaTypeValue type = VorbisType(kShape, {Bytes{1}, Bytes{2}, Bytes{3}});
            BYTE* const size = type->pbFormat + kHeaderSizesOffset + 4 * header;
            size[0] = 2; // one more than there is
            size[3] = highByte;
            const CodecDescription described = DescribeAudioCodec(type.Get());
            EXPECT_EQ(described.codecId, "");
            EXPECT_FALSE(described.codecPrivate.has_value());
        }
    }
}

TEST(VorbisCodecTest, HeaderSizesWhoseSumWrapsAroundAreAnUnsupportedCodec) {
    MediaTypeValue type = VorbisType(kShape, {Bytes{1}, Bytes{2}, Bytes{3}});
    for (size_t i = 0; i < 8; ++i) {
        type->pbFormat[kHeaderSizesOffset + i] = i % 4 == 3 ? 0x80 : 0; // twice 2^31: 0 in 32 bits
    }
    EXPECT_EQ(DescribeAudioCodec(type.Get()).codecId, "");
}

} // namespace

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/payload_conversion.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::ConvertPayload;
using media::NeedsAnnexBConversion;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::Mpeg2VideoType;

constexpr const char* kByteStream = "00000001 0910 00000001 6588";
constexpr const char* kUnchanged = "000000010910000000016588";
constexpr const char* kConverted = "000000020910000000026588";

std::string Convert(const MediaTypeValue& type) {
    return ToHex(ConvertPayload(type.Get(), FromHex(kByteStream)));
}

TEST(AnnexBPayloadTest, ByteStreamSamplesOfBothCodecsGetFourByteLengths) {
    for (const GUID& subtype : {mediasubtype::kH264AnnexB, mediasubtype::kHevcAnnexB}) {
        const MediaTypeValue type = Mpeg2VideoType(subtype, {}, {});
        EXPECT_TRUE(NeedsAnnexBConversion(type.Get()));
        EXPECT_EQ(Convert(type), kConverted);
    }
}

TEST(AnnexBPayloadTest, LengthPrefixedAndOtherVideoIsCopiedUnchanged) {
    for (const GUID& subtype : {mediasubtype::kAvc1, mediasubtype::kHvc1, mediasubtype::kMp4v, mediasubtype::kTheora,
                                MEDIASUBTYPE_MPEG2_VIDEO}) {
        const MediaTypeValue type = Mpeg2VideoType(subtype, {}, {});
        EXPECT_FALSE(NeedsAnnexBConversion(type.Get()));
        EXPECT_EQ(Convert(type), kUnchanged);
    }
}

TEST(AnnexBPayloadTest, OtherFormatBlocksAreCopiedUnchanged) {
    for (const GUID& subtype : {mediasubtype::kH264AnnexB, mediasubtype::kHevcAnnexB}) {
        EXPECT_EQ(Convert(test_support::VideoInfoType(subtype)), kUnchanged);
        EXPECT_EQ(Convert(test_support::VideoInfo2Type(subtype)), kUnchanged);
    }
}

TEST(AnnexBPayloadTest, OtherMajorTypesAreCopiedUnchanged) {
    MediaTypeValue type = Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, {});
    type->majortype = MEDIATYPE_Audio;
    EXPECT_FALSE(NeedsAnnexBConversion(type.Get()));
    EXPECT_EQ(Convert(type), kUnchanged);
}

TEST(AnnexBPayloadTest, ASampleWithThreeByteStartCodesOnlyIsWrittenAsOneUnitOfItsWholeLength) {
    const MediaTypeValue type = Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, {});
    EXPECT_EQ(ToHex(ConvertPayload(type.Get(), FromHex("0000010910 0000016588"))), "0000000a"
                                                                                   "00000109100000016588");
}

// The conversion of H.265 is that of H.264, whatever the units' headers say.
TEST(AnnexBPayloadTest, NalHeadersAreNotLookedAt) {
    const std::vector<BYTE> sample = FromHex("00000001 ffffff 00000001 00 00000001 4201");
    const auto avc = ConvertPayload(Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, {}).Get(), sample);
    const auto hevc = ConvertPayload(Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, {}).Get(), sample);
    EXPECT_EQ(ToHex(avc), "00000003ffffff"
                          "0000000100"
                          "000000024201");
    EXPECT_EQ(avc, hevc);
}

TEST(AnnexBPayloadTest, NothingLeftToWriteIsEmpty) {
    const MediaTypeValue type = Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, {});
    EXPECT_TRUE(ConvertPayload(type.Get(), {}).empty());
    EXPECT_TRUE(ConvertPayload(type.Get(), FromHex("00000001")).empty());
    EXPECT_TRUE(ConvertPayload(Mpeg2VideoType(mediasubtype::kAvc1, {}, {}).Get(), {}).empty());
}

} // namespace

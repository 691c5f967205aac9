// Samples as strict files hold them.
#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/payload_conversion.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::ConvertStrictPayload;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;

const MediaTypeValue kAvc = test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, {});
const MediaTypeValue kHevc = test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, {});
const MediaTypeValue kAvc1 = test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, {});
const MediaTypeValue kText = test_support::TextType();

std::string Converted(const MediaTypeValue& type, const char* hex) {
    return ToHex(ConvertStrictPayload(type.Get(), FromHex(hex)));
}

std::string InPlace(const MediaTypeValue& type, const char* hex) {
    Bytes payload = FromHex(hex);
    const auto left = media::ConvertStrictInPlace(type.Get(), payload);
    return left ? ToHex(Bytes(left->begin(), left->end())) : "none";
}

TEST(StrictPayloadTest, ByteStreamsGetLengthsWhereverAStartCodeStands) {
    for (const MediaTypeValue& type : {kAvc, kHevc}) {
        EXPECT_TRUE(media::NeedsStrictConversion(type.Get()));
        EXPECT_EQ(Converted(type, "000001 0910 000001 6588aa 00"), "000000020910000000036588aa");
        EXPECT_EQ(InPlace(type, "000001 0910 000001 6588aa 00"), "none");
        EXPECT_EQ(InPlace(type, "00000001 0910 00"), "000000020910");
    }
}

TEST(StrictPayloadTest, OtherSamplesStayAsTheyAre) {
    EXPECT_FALSE(media::NeedsStrictConversion(kAvc1.Get()));
    EXPECT_EQ(Converted(kAvc1, "000001 0910 00"), "000001091000");
    EXPECT_EQ(InPlace(kAvc1, "000001 0910 00"), "000001091000");
    const MediaTypeValue subtitle = test_support::SubtitleType(mediasubtype::kUtf8);
    EXPECT_FALSE(media::NeedsStrictConversion(subtitle.Get()));
    EXPECT_EQ(Converted(subtitle, "e4"), "e4");
}

TEST(StrictPayloadTest, PlainTextThatIsUtf8StaysAndItsEndGoes) {
    EXPECT_TRUE(media::NeedsStrictConversion(kText.Get()));
    for (const char* text : {"", "4869", "c3a4", "e282ac", "ed9fbf", "ee8080", "f09f9880", "f48fbfbf"}) {
        EXPECT_EQ(Converted(kText, text), text);
        EXPECT_EQ(Converted(kText, (std::string(text) + "0000").c_str()), text);
        EXPECT_EQ(InPlace(kText, (std::string(text) + "00").c_str()), text);
    }
}

TEST(StrictPayloadTest, OtherTextIsTakenForWindows1252) {
    EXPECT_EQ(Converted(kText, "e4 2000"), "c3a420");
    EXPECT_EQ(Converted(kText, "80"), "e282ac"); // the euro sign
    EXPECT_EQ(Converted(kText, "c3"), "c383");   // a character that is cut
    EXPECT_EQ(InPlace(kText, "e4"), "none");
    // Overlong forms, a surrogate, beyond the last character, a stray continuation, a form that does not exist.
    for (const char* invalid : {"c080", "e09fbf", "f08fbfbf", "eda080", "f4908080", "80", "f888808080", "c341"}) {
        EXPECT_NE(Converted(kText, invalid), invalid);
    }
}

} // namespace

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/media/encoder_parameter_sets.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeCodec;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;

const Bytes kSps = FromHex("6764000b");
const Bytes kSps2 = FromHex("274d");
const Bytes kPps = FromHex("68eb");
const Bytes kPps2 = FromHex("28ee3c");
const Bytes kSei = FromHex("0605ff");

CodecDescription Describe(const GUID& subtype, const Bytes& sequenceHeader, DWORD profile = 100, DWORD level = 31,
                          DWORD lengthFieldBytes = 4) {
    return DescribeCodec(
        test_support::Mpeg2VideoType(subtype, {}, sequenceHeader, profile, level, lengthFieldBytes).Get());
}

std::string Avc1Record(const Bytes& sequenceHeader, DWORD profile = 100, DWORD level = 31, DWORD lengthFieldBytes = 4) {
    const CodecDescription described = Describe(mediasubtype::kAvc1, sequenceHeader, profile, level, lengthFieldBytes);
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

std::string ByteStreamRecord(const Bytes& sequenceHeader) {
    const CodecDescription described = Describe(mediasubtype::kH264AnnexB, sequenceHeader);
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

TEST(AvcConfigurationTest, ASeiInAnAvc1SequenceHeaderIsDroppedAndOneSpsAndOnePpsStay) {
    EXPECT_EQ(Avc1Record(LengthPrefixed({kSps, kSei, kPps})), "016400"
                                                              "1f0301"
                                                              "00046764000b"
                                                              "01"
                                                              "000268eb");
}

TEST(AvcConfigurationTest, AZeroLengthEndsTheWalkAndHidesTheUnitsBehindIt) {
    const Bytes hidden = Concat({LengthPrefixed({kSps, kPps}), {0, 0}, LengthPrefixed({kSps2, kPps2})});
    EXPECT_EQ(Avc1Record(hidden), Avc1Record(LengthPrefixed({kSps, kPps})));
    EXPECT_EQ(Avc1Record(Concat({{0, 0}, LengthPrefixed({kSps, kPps})})), "0164001f030000");
}

TEST(AvcConfigurationTest, TheHeadTakesTheLowBytesOfProfileAndLevelAndAFixedCompatibility) {
    EXPECT_EQ(Avc1Record(LengthPrefixed({kSps}), 0x1234564d, 0xabcdef28).substr(0, 12), "014d00280301");
}

TEST(AvcConfigurationTest, TheDeclaredLengthSizeIsFourWhateverTheMediaTypeSays) {
    for (const DWORD lengthFieldBytes : {0u, 1u, 2u, 4u, 0xffffffffu}) {
        EXPECT_EQ(Avc1Record(LengthPrefixed({kSps}), 100, 31, lengthFieldBytes).substr(8, 2), "03");
    }
}

TEST(AvcConfigurationTest, ListsKeepTheOrderOfAppearanceAndSizeIsSevenPlusTheEntries) {
    const Bytes header = LengthPrefixed({kPps, kSps2, kPps2, kSps});
    const std::string record = Avc1Record(header);
    EXPECT_EQ(record, "0164001f0302"
                      "0002274d"
                      "00046764000b"
                      "02"
                      "000268eb"
                      "000328ee3c");
    EXPECT_EQ(record.size() / 2, 7 + header.size());
}

TEST(AvcConfigurationTest, OnlyTheLowFiveBitsOfTheFirstByteAreTheType) {
    const Bytes unusualSps = FromHex("e7aa"); // all bits above the type set
    const Bytes spsExtension = FromHex("6d"); // 13
    const Bytes subsetSps = FromHex("6f");    // 15
    const Bytes slice = FromHex("65888484");  // 5
    EXPECT_EQ(Avc1Record(LengthPrefixed({unusualSps, spsExtension, subsetSps, slice})), "0164001f03010002e7aa00");
}

TEST(AvcConfigurationTest, AnEmptySequenceHeaderGivesARecordWithoutParameterSets) {
    EXPECT_EQ(Avc1Record({}), "0164001f030000");
    EXPECT_EQ(ByteStreamRecord({}), "0164001f030000");
}

TEST(AvcConfigurationTest, AByteStreamGivesTheSameRecordAsItsUnitsWithLengths) {
    EXPECT_EQ(ByteStreamRecord(ByteStream({kSps, kSei, kPps})), Avc1Record(LengthPrefixed({kSps, kSei, kPps})));
}

TEST(AvcConfigurationTest, EmptyUnitsOfAByteStreamDoNotHideTheOnesBehindThem) {
    EXPECT_EQ(ByteStreamRecord(ByteStream({{}, kSps, {}, {}, kPps})), Avc1Record(LengthPrefixed({kSps, kPps})));
}

// Deliberate: a three-byte start code is no boundary, so the PPS stays inside the SPS.
TEST(AvcConfigurationTest, AThreeByteStartCodeInAByteStreamIsNoBoundary) {
    EXPECT_EQ(ByteStreamRecord(FromHex("00000001 6764000b 000001 68eb")), "0164001f03010009"
                                                                          "6764000b00000168eb"
                                                                          "00");
}

TEST(AvcConfigurationTest, ParameterSetsOfARealEncoderGiveTheSameSetsInTheRecord) {
    const Bytes sps = FromHex(mkv_test::kAvcSps);
    const Bytes pps = FromHex(mkv_test::kAvcPps);
    const CodecDescription described = Describe(mediasubtype::kH264AnnexB, ByteStream({{0x09, 0x10}, sps, pps}),
                                                mkv_test::kAvcProfile, mkv_test::kAvcLevel);
    ASSERT_TRUE(described.codecPrivate.has_value());
    EXPECT_EQ(ToHex(*described.codecPrivate),
              "0164000b03010018" + std::string(mkv_test::kAvcSps) + "010006" + mkv_test::kAvcPps);
    EXPECT_EQ(described.codecId, "V_MPEG4/ISO/AVC");
}

// ---- Damaged sequence headers ------------------------------------------------------------------------------------

TEST(AvcConfigurationTest, ALengthThatPointsBehindTheSequenceHeaderIsAnUnsupportedCodec) {
    const CodecDescription described = Describe(mediasubtype::kAvc1, FromHex("0004 6764000b 0003 68eb"));
    EXPECT_EQ(described.codecId, "");
    EXPECT_FALSE(described.codecPrivate.has_value());
}

TEST(AvcConfigurationTest, AnAvc1SequenceHeaderCutAtEveryByteIsWholeUnitsOrUnsupported) {
    const Bytes whole = LengthPrefixed({kSps, kPps});
    for (size_t size = 0; size <= whole.size(); ++size) {
        // An allocation of its own for each length, so that a read behind it is seen.
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const std::string record = Avc1Record(cut);
        const bool endsInALength = size < 2 || (size >= 6 && size < 8); // fewer bytes than a length: the end
        if (endsInALength) {
            EXPECT_EQ(record, size < 2 ? "0164001f030000" : "0164001f030100046764000b00") << size;
        } else if (size == whole.size()) {
            EXPECT_EQ(record, "0164001f030100046764000b01000268eb");
        } else {
            EXPECT_EQ(record, "none") << size;
        }
    }
}

TEST(AvcConfigurationTest, AParameterSetTooLongForItsLengthIsLeftOut) {
    Bytes tooLong(65536, 0x55);
    tooLong[0] = 0x67;
    EXPECT_EQ(ByteStreamRecord(ByteStream({tooLong, kSps2, kPps})), "0164001f0301"
                                                                    "0002274d"
                                                                    "01000268eb");
}

} // namespace

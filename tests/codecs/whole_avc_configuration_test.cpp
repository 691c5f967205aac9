#include "codecs/whole_avc_configuration.h"

#include <gtest/gtest.h>

#include "codecs/avc_configuration.h"
#include "tests/support/hex_bytes.h"

namespace {

using codecs::SequenceFacts;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;

constexpr SequenceFacts kFacts{77, 40, 4};

// By libx264: High, High 10 and Constrained Baseline, 64x48. The records are those that ffmpeg writes.
const Bytes kHighSps = FromHex("6764000aacd9447b011000000300100000030320f1225960");
const Bytes kHighPps = FromHex("68ebe3cb22c0");
constexpr const char* kHighRecord =
    "0164000affe100186764000aacd9447b011000000300100000030320f122596001000668ebe3cb22c0fdf8f800";
const Bytes kHigh10Sps = FromHex("676e000aa6cd9447b011000003000100000300320f122596");
const Bytes kBaselineSps = FromHex("6742c00ad9047b011000000300100000030320f1226480");
const Bytes kBaselinePps = FromHex("68cb83cb20");

std::string RecordOf(const Bytes& header, const SequenceFacts& facts = kFacts) {
    const auto record = codecs::BuildWholeAvcConfiguration(header, facts);
    return record ? ToHex(*record) : "none";
}

TEST(WholeAvcConfigurationTest, AllIsTakenFromTheSpsAndTheReservedBitsAreSet) {
    EXPECT_EQ(RecordOf(ByteStream({kHighSps, kHighPps})), kHighRecord);
    EXPECT_EQ(RecordOf(LengthPrefixed({kHighSps, kHighPps})), kHighRecord);
    EXPECT_EQ(RecordOf(ByteStream({kBaselineSps, kBaselinePps})),
              "0142c00affe100176742c00ad9047b011000000300100000030320f122648001000568cb83cb20");
}

TEST(WholeAvcConfigurationTest, HighProfilesEndWithChromaAndDepths) {
    const std::string record = RecordOf(ByteStream({kHigh10Sps, kHighPps}));
    EXPECT_EQ(record.substr(0, 12), "016e000affe1");
    EXPECT_EQ(record.substr(record.size() - 8), "fdfafa00");
}

TEST(WholeAvcConfigurationTest, StartCodesOfThreeBytesAreBoundariesAndZerosBehindAreLeftOut) {
    EXPECT_EQ(RecordOf(Concat({FromHex("000001"), kHighSps, FromHex("0000 000001"), kHighPps, FromHex("00")})),
              kHighRecord);
}

TEST(WholeAvcConfigurationTest, OtherUnitsAndSecondCopiesAreLeftOut) {
    EXPECT_EQ(RecordOf(ByteStream({FromHex("0910"), kHighSps, FromHex("0605ff80"), kHighPps, kHighSps, kHighPps})),
              kHighRecord);
}

TEST(WholeAvcConfigurationTest, ExtensionsOfTheSpsFollowTheDepthsOfHighProfilesOnly) {
    const Bytes extension = FromHex("6d aabb");
    EXPECT_EQ(RecordOf(LengthPrefixed({kHighSps, extension, kHighPps})),
              std::string(kHighRecord).substr(0, 88) + "01" + "0003" + "6daabb");
    EXPECT_EQ(RecordOf(LengthPrefixed({kBaselineSps, extension})), RecordOf(LengthPrefixed({kBaselineSps})));
}

TEST(WholeAvcConfigurationTest, TheProfileIsReadWithoutEmulationPrevention) {
    // Profile 66, no constraints and level 0 stand as 42 00 00 03; the identifier 0 is the one bit that follows.
    EXPECT_EQ(RecordOf(LengthPrefixed({FromHex("67 42 0000 03 80")})), "01420000ffe1"
                                                                       "0006"
                                                                       "674200000380"
                                                                       "00");
}

TEST(WholeAvcConfigurationTest, ADamagedHeadOfTheFirstSpsMakesNoRecord) {
    EXPECT_EQ(RecordOf(LengthPrefixed({FromHex("67 64 00")})), "none");
    EXPECT_EQ(RecordOf(LengthPrefixed({FromHex("67")})), "none");
    EXPECT_EQ(RecordOf(LengthPrefixed({Bytes(kHighSps.begin(), kHighSps.begin() + 4)})), "none");
    EXPECT_EQ(RecordOf(LengthPrefixed({FromHex("67 64000a 00000000000000000000")})), "none");
    // A depth of 15 bits more than 8: 1, 010, 00010000, 1.
    EXPECT_EQ(RecordOf(LengthPrefixed({FromHex("67 64000a a10c")})), "none");
}

TEST(WholeAvcConfigurationTest, LengthsThatContradictTheBytesMakeNoRecord) {
    EXPECT_EQ(RecordOf(FromHex("0003 6764")), "none");
    EXPECT_EQ(RecordOf(FromHex("ffff")), "none");
    EXPECT_EQ(RecordOf(Concat({LengthPrefixed({kHighSps}), FromHex("0100 68")})), "none");
}

TEST(WholeAvcConfigurationTest, WithoutAnSpsTheMediaTypeTellsTheProfile) {
    EXPECT_EQ(RecordOf({}), "014d0028ffe000");
    EXPECT_EQ(RecordOf(LengthPrefixed({kHighPps}), {100, 31, 4}), "0164001fffe0"
                                                                  "01"
                                                                  "000668ebe3cb22c0"
                                                                  "fdf8f800");
}

TEST(WholeAvcConfigurationTest, WithoutAPpsTheCountIsZero) {
    EXPECT_EQ(RecordOf(LengthPrefixed({kBaselineSps})).substr(2 * (8 + kBaselineSps.size())), "00");
}

TEST(WholeAvcConfigurationTest, TheLengthSizeIsTheStreamsOwn) {
    EXPECT_EQ(RecordOf({}, {77, 40, 1}).substr(8, 2), "fc");
    EXPECT_EQ(RecordOf({}, {77, 40, 2}).substr(8, 2), "fd");
    for (const size_t lengthBytes : {size_t{0}, size_t{3}, size_t{4}, size_t{5}, size_t{0xffffffff}}) {
        EXPECT_EQ(RecordOf({}, {77, 40, lengthBytes}).substr(8, 2), "ff");
    }
}

TEST(WholeAvcConfigurationTest, CountsStayWithinTheirBits) {
    std::vector<Bytes> units;
    for (int i = 0; i < 300; ++i) {
        units.push_back(Concat({kBaselineSps, {static_cast<uint8_t>(i / 256 + 1), static_cast<uint8_t>(i + 1), 1}}));
        units.push_back({0x68, static_cast<uint8_t>(i / 256 + 1), static_cast<uint8_t>(i + 1), 1});
    }
    const auto record = codecs::BuildWholeAvcConfiguration(LengthPrefixed(units), kFacts);
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ((*record)[5], 0xe0 | 31);
    const size_t spsBytes = 31 * (2 + kBaselineSps.size() + 3);
    EXPECT_EQ((*record)[6 + spsBytes], 255);
    EXPECT_EQ(record->size(), 7 + spsBytes + 255 * 6);
}

TEST(WholeAvcConfigurationTest, AUnitThatTheRecordCannotMeasureIsLeftOut) {
    const Bytes tooLong = Concat({FromHex("68"), Bytes(65535, 0x55)});
    EXPECT_EQ(RecordOf(ByteStream({kHighSps, tooLong, kHighPps})), kHighRecord);
    const Bytes longest(tooLong.begin(), tooLong.end() - 1);
    EXPECT_EQ(RecordOf(ByteStream({kBaselineSps, longest})).size(), 2 * (7 + 2 + kBaselineSps.size() + 2 + 65535));
}

TEST(WholeAvcConfigurationTest, AZeroLengthEndsTheUnits) {
    EXPECT_EQ(RecordOf(Concat({LengthPrefixed({kHighSps, kHighPps}), {0, 0}, LengthPrefixed({kBaselineSps})})),
              kHighRecord);
    EXPECT_EQ(RecordOf(FromHex("0000")), RecordOf({}));
}

TEST(WholeAvcConfigurationTest, ARecordIsMadeWholeWithItsOwnLengthSize) {
    const Bytes compatible = *codecs::BuildAvcConfiguration(LengthPrefixed({kHighSps, kHighPps}), 1, 2);
    EXPECT_EQ(RecordOf(compatible), kHighRecord);
    EXPECT_EQ(RecordOf(FromHex(kHighRecord)), kHighRecord);
    std::string shortLengths = kHighRecord;
    shortLengths.replace(8, 2, "fd");
    EXPECT_EQ(RecordOf(FromHex(shortLengths.c_str())), shortLengths);
    // Its extensions stay.
    const std::string extended = std::string(kHighRecord).substr(0, 88) + "0100036daabb";
    EXPECT_EQ(RecordOf(FromHex(extended.c_str())), extended);
}

TEST(WholeAvcConfigurationTest, ARecordThatIsCutIsNone) {
    const Bytes whole = FromHex(kHighRecord);
    for (size_t size = 1; size < whole.size() - 4; ++size) {
        EXPECT_EQ(RecordOf(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))),
                  size == 1 ? RecordOf({}) : "none")
            << size;
    }
}

} // namespace

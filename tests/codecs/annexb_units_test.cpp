#include "codecs/annexb_units.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace {

using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;

std::vector<std::string> UnitsOf(const char* hex) {
    const Bytes stream = FromHex(hex);
    std::vector<std::string> units;
    for (const codecs::ByteView unit : codecs::FindAnnexBUnits(stream)) {
        units.push_back(ToHex(Bytes(unit.begin(), unit.end())));
    }
    return units;
}

using Strings = std::vector<std::string>;

TEST(AnnexBUnitsTest, StartCodesOfThreeAndOfFourBytesAreBoundaries) {
    EXPECT_EQ(UnitsOf("00000001 6764 000001 68ee 00000001 65"), (Strings{"6764", "68ee", "65"}));
}

TEST(AnnexBUnitsTest, ZerosInFrontAndBehindBelongToNoUnit) {
    EXPECT_EQ(UnitsOf("0000000000 01 6764 000000 00000001 68ee 0000"), (Strings{"6764", "68ee"}));
}

TEST(AnnexBUnitsTest, NothingBetweenTwoStartCodesIsNoUnit) {
    EXPECT_EQ(UnitsOf("000001 000001 00000001 09"), (Strings{"09"}));
    EXPECT_EQ(UnitsOf("000001"), Strings());
    EXPECT_EQ(UnitsOf(""), Strings());
    EXPECT_EQ(UnitsOf("000000"), Strings());
}

TEST(AnnexBUnitsTest, BytesWithoutAStartCodeAreOneUnit) {
    EXPECT_EQ(UnitsOf("6764 00000301"), (Strings{"676400000301"}));
}

TEST(AnnexBUnitsTest, AStreamBeginsWithTwoZerosAtLeastAndAOne) {
    EXPECT_TRUE(codecs::BeginsWithStartCode(FromHex("000001")));
    EXPECT_TRUE(codecs::BeginsWithStartCode(FromHex("0000000001 67")));
    EXPECT_FALSE(codecs::BeginsWithStartCode(FromHex("0001 67")));
    EXPECT_FALSE(codecs::BeginsWithStartCode(FromHex("000002")));
    EXPECT_FALSE(codecs::BeginsWithStartCode(FromHex("0000")));
    EXPECT_FALSE(codecs::BeginsWithStartCode({}));
}

TEST(AnnexBUnitsTest, ConvertedUnitsHaveLengthsOfFourBytes) {
    EXPECT_EQ(ToHex(codecs::ConvertAnnexBUnits(FromHex("000001 0910 000001 6588aa 00"))), "000000020910"
                                                                                          "000000036588aa");
}

std::string InPlace(const char* hex) {
    Bytes stream = FromHex(hex);
    const auto left = codecs::ConvertAnnexBUnitsInPlace(stream);
    EXPECT_TRUE(left || stream == FromHex(hex)) << "changed";
    return left ? ToHex(Bytes(left->begin(), left->end())) : "none";
}

TEST(AnnexBUnitsTest, InPlaceLengthsStandWhereStartCodesStood) {
    EXPECT_EQ(InPlace("00000001 0910 00000001 6588aa"), "000000020910"
                                                        "000000036588aa");
    EXPECT_EQ(InPlace("0000 00000001 0910 0000 000001 6588aa 00"), "000000020910"
                                                                   "000000036588aa");
    EXPECT_EQ(InPlace(""), "");
    EXPECT_EQ(InPlace("00000001"), "");
}

TEST(AnnexBUnitsTest, InPlaceAUnitWithoutRoomForItsLengthLeavesTheStreamAlone) {
    EXPECT_EQ(InPlace("000001 0910"), "none");
    EXPECT_EQ(InPlace("00000001 0910 000001 6588aa"), "none");
    EXPECT_EQ(InPlace("6588aa"), "none");
    // Zeros that are left out in front make room for a short start code behind them.
    EXPECT_EQ(InPlace("00000001 09 00 000001 65 000001 41"), "none");
    EXPECT_EQ(InPlace("00000001 09 0000 000001 65 000001 41"), "0000000109"
                                                               "0000000165"
                                                               "0000000141");
}

} // namespace

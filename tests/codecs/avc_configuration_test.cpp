#include "codecs/avc_configuration.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace {

using codecs::AvcConfiguration;
using codecs::BuildAvcConfiguration;
using codecs::ParseAvcConfiguration;
using mkv_test::Bytes;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;

const Bytes kSps = FromHex("6764000b");
const Bytes kSps2 = FromHex("274d");
const Bytes kPps = FromHex("68eb");
const Bytes kPps2 = FromHex("28ee3c");

TEST(AvcConfigurationTest, ByteFourIsThreeAndByteFiveTheBareCountOfSps) {
    const auto record = BuildAvcConfiguration(LengthPrefixed({kSps, kPps}), 100, 31);
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ((*record)[4], 0x03);
    EXPECT_EQ((*record)[5], 0x01);
}

TEST(AvcConfigurationTest, CountsStayWithinTheirByte) {
    std::vector<Bytes> units(300, kSps2);
    units.insert(units.end(), 255, kPps);
    const auto record = BuildAvcConfiguration(LengthPrefixed(units), 100, 31);
    ASSERT_TRUE(record.has_value());
    EXPECT_EQ(record->size(), 7u + 255 * 4 + 255 * 4);
    EXPECT_EQ((*record)[5], 255);
    EXPECT_EQ((*record)[6 + 255 * 4], 255);
}

TEST(AvcConfigurationTest, WhatIsBuiltIsParsedBack) {
    const Bytes sets = LengthPrefixed({kSps, kSps2, kPps, kPps2});
    const auto record = BuildAvcConfiguration(sets, 77, 40);
    ASSERT_TRUE(record.has_value());
    const AvcConfiguration parsed = ParseAvcConfiguration(*record);
    EXPECT_EQ(parsed.profile, 77);
    EXPECT_EQ(parsed.level, 40);
    EXPECT_EQ(parsed.lengthBytes, 4u);
    EXPECT_EQ(ToHex(parsed.parameterSets), ToHex(sets));
    EXPECT_EQ(BuildAvcConfiguration(parsed.parameterSets, parsed.profile, parsed.level), record);
}

// As the standard has it: reserved bits are set, and what high profiles add follows the sets.
TEST(AvcConfigurationTest, ARecordOfAnotherMuxerIsParsedPastItsReservedBits) {
    const AvcConfiguration parsed = ParseAvcConfiguration(FromHex("01640c1f fde1 0004 6764000b 01 0002 68eb fdf8f800"));
    EXPECT_EQ(parsed.profile, 0x64);
    EXPECT_EQ(parsed.level, 0x1f);
    EXPECT_EQ(parsed.lengthBytes, 2u);
    EXPECT_EQ(ToHex(parsed.parameterSets), ToHex(LengthPrefixed({kSps, kPps})));
}

TEST(AvcConfigurationTest, OfARecordCutAtEveryByteTheWholeSetsAreKept) {
    const Bytes whole = *BuildAvcConfiguration(LengthPrefixed({kSps, kPps}), 100, 31);
    for (size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const AvcConfiguration parsed = ParseAvcConfiguration(cut);
        EXPECT_EQ(parsed.profile, size >= 6 ? 100 : 0) << size;
        Bytes sets = size >= 12 ? LengthPrefixed({kSps}) : Bytes();
        sets = size == whole.size() ? Concat({sets, LengthPrefixed({kPps})}) : sets;
        EXPECT_EQ(ToHex(parsed.parameterSets), ToHex(sets)) << size;
    }
}

TEST(AvcConfigurationTest, ExtensionsOfHighProfilesFollowTheOtherSets) {
    const Bytes sets = FromHex("01640c1f ffe1 0004 6764000b 01 0002 68eb fdf8f8 02 0003 6daabb 0002 67ff");
    const AvcConfiguration parsed = ParseAvcConfiguration(sets);
    EXPECT_EQ(ToHex(parsed.parameterSets), ToHex(LengthPrefixed({kSps, kPps, FromHex("6daabb")})));
    EXPECT_TRUE(parsed.isWhole);
}

TEST(AvcConfigurationTest, ARecordIsWholeWhenItsCountsTellEveryByte) {
    const Bytes whole = FromHex("01640c1f ffe1 0004 6764000b 01 0002 68eb fdf8f8 01 0003 6daabb");
    constexpr size_t kWithoutChroma = 17;
    for (size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(ParseAvcConfiguration(cut).isWhole, size == whole.size() || size == kWithoutChroma) << size;
    }
    EXPECT_FALSE(ParseAvcConfiguration(Concat({whole, {0}})).isWhole);
}

} // namespace

#include "media/opus_padding.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/media_types.h"

namespace {

const std::vector<BYTE> kTwentyMs{31 << 3, 1, 2};
constexpr REFERENCE_TIME kMs = 10000;

TEST(OpusPaddingTest, KnowsOpusByItsMediaType) {
    EXPECT_TRUE(media::IsOpus(test_support::WaveType(mediasubtype::kOpus).Get()));
    EXPECT_FALSE(media::IsOpus(test_support::WaveType(mediasubtype::kPcm).Get()));
}

TEST(OpusPaddingTest, WhatIsBehindTheStopTimeIsPadding) {
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 20 * kMs), 0u);
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 25 * kMs), 0u);
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 13 * kMs), 7000000u);
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 197917), 208333u) << "ten samples";
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 199896), 0u) << "less than half a sample";
}

TEST(OpusPaddingTest, NothingIsSaidByAStopTimeThatIsMissing) {
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, 0), 0u);
    EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, -5), 0u);
    EXPECT_EQ(media::OpusPaddingNs(std::vector<BYTE>(), kMs), 0u);
}

TEST(OpusPaddingTest, ALengthWithoutPaddingGivesThatPaddingBackToTheSample) {
    for (UINT64 samples = 0; samples < 960; ++samples) {
        const UINT64 paddingNs = (samples * 1000000000 + 24000) / 48000;
        const REFERENCE_TIME length = media::OpusLengthWithout(kTwentyMs, paddingNs);
        EXPECT_EQ(media::OpusPaddingNs(kTwentyMs, length), paddingNs) << samples;
    }
}

TEST(OpusPaddingTest, OfTheLongestPacketAllMayBePadding) {
    const std::vector<BYTE> packet{31 << 3 | 3, 6}; // 120 ms
    EXPECT_EQ(media::OpusLengthWithout(packet, 115000000), 5 * kMs);
    EXPECT_EQ(media::OpusLengthWithout(packet, 120000000), 0);
    EXPECT_EQ(media::OpusPaddingNs(packet, 5 * kMs), 115000000u);
}

TEST(OpusPaddingTest, NoLengthIsBelowZero) {
    EXPECT_EQ(media::OpusLengthWithout(kTwentyMs, 20000000), 0);
    EXPECT_EQ(media::OpusLengthWithout(kTwentyMs, ~UINT64{0}), 0);
    EXPECT_EQ(media::OpusLengthWithout(std::vector<BYTE>(), 0), 0);
    EXPECT_EQ(media::OpusLengthWithout(kTwentyMs, 0), 20 * kMs);
}

} // namespace

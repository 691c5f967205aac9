#include "mkv/cluster_rule.h"

#include <gtest/gtest.h>

namespace {

constexpr UINT64 kMs = 1000000; // in nanoseconds

TEST(ClusterRuleTest, ConstantsOfTheFormat) {
    EXPECT_EQ(mkv::kTimecodeScaleNs, 1000000u);
    EXPECT_EQ(mkv::kMaxClusterSpanMs, 32767u);
    EXPECT_EQ(mkv::kMaxClusterPayloadBytes, 4194304u);
}

TEST(ClusterRuleTest, SpanCountsWholeMillisecondsToTheBlocksEnd) {
    EXPECT_FALSE(mkv::ExceedsCluster(32766 * kMs, 0, 0));
    EXPECT_FALSE(mkv::ExceedsCluster(32767 * kMs - 1, 0, 0));
    EXPECT_TRUE(mkv::ExceedsCluster(32767 * kMs, 0, 0));
    EXPECT_TRUE(mkv::ExceedsCluster(42767 * kMs, 10000 * kMs, 0));
    EXPECT_FALSE(mkv::ExceedsCluster(42766 * kMs, 10000 * kMs, 0));
}

TEST(ClusterRuleTest, SpanCountsBackwardsToo) {
    EXPECT_FALSE(mkv::ExceedsCluster(0, 32767 * kMs - 1, 0));
    EXPECT_TRUE(mkv::ExceedsCluster(0, 32767 * kMs, 0));
}

TEST(ClusterRuleTest, PayloadOfFourMebibytesIsTooMuch) {
    EXPECT_FALSE(mkv::ExceedsCluster(0, 0, 4194303));
    EXPECT_TRUE(mkv::ExceedsCluster(0, 0, 4194304));
}

TEST(ClusterRuleTest, OffsetsOfSixteenBitsFit) {
    EXPECT_TRUE(mkv::FitsBlockOffset(32767 * kMs, 0));
    EXPECT_FALSE(mkv::FitsBlockOffset(32768 * kMs, 0));
    EXPECT_TRUE(mkv::FitsBlockOffset(0, 32768 * kMs));
    EXPECT_FALSE(mkv::FitsBlockOffset(0, 32769 * kMs));
}

TEST(ClusterRuleTest, OffsetsAreTruncatedTowardsZeroFromTheClustersMillisecond) {
    EXPECT_TRUE(mkv::FitsBlockOffset(32768 * kMs - 1, 0));
    EXPECT_TRUE(mkv::FitsBlockOffset(32767 * kMs, kMs - 1));
    EXPECT_TRUE(mkv::FitsBlockOffset(1, 32769 * kMs));
}

} // namespace

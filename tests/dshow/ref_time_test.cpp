// The time bases and the ways between them.
#include "dshow/ref_time.h"

#include <gtest/gtest.h>

namespace {

constexpr REFERENCE_TIME kMin = std::numeric_limits<REFERENCE_TIME>::min();

TEST(RefTimeTest, OneMillisecondAndOneSecondInReferenceTimes) {
    EXPECT_EQ(1000000, kReferenceTimesPerMs * kNsPerReferenceTime);
    EXPECT_EQ(1000 * kReferenceTimesPerMs, kReferenceTimesPerSecond);
}

TEST(RefTimeTest, ShorterUnitsAreCutOffTowardsZero) {
    EXPECT_EQ(1, ReferenceTimeFromNs(199));
    EXPECT_EQ(-1, ReferenceTimeFromNs(-199));
    EXPECT_EQ(2, MsFromReferenceTime(29999));
    EXPECT_EQ(-2, MsFromReferenceTime(-29999));
}

TEST(RefTimeTest, TheFilesTimeBeginsAtZeroAndEndsWhere63BitsDo) {
    EXPECT_EQ(0u, NsFromReferenceTime(kMin));
    EXPECT_EQ(0u, NsFromReferenceTime(-1));
    EXPECT_EQ(4200u, NsFromReferenceTime(42));
    EXPECT_EQ(9223372036854775800u, NsFromReferenceTime(92233720368547758));
    EXPECT_EQ(9223372036854775800u, NsFromReferenceTime(kMaxReferenceTime));
}

TEST(RefTimeTest, SumsStopAtTheGreatestTime) {
    EXPECT_EQ(3, AddSaturated(1, 2));
    EXPECT_EQ(-1, AddSaturated(-3, 2));
    EXPECT_EQ(kMaxReferenceTime, AddSaturated(kMaxReferenceTime - 1, 1));
    EXPECT_EQ(kMaxReferenceTime, AddSaturated(kMaxReferenceTime, 1));
    EXPECT_EQ(kMaxReferenceTime - 1, AddSaturated(kMin, std::numeric_limits<std::uint64_t>::max() - 1));
    EXPECT_EQ(kMaxReferenceTime, AddSaturated(0, std::numeric_limits<std::uint64_t>::max()));
}

} // namespace

#include "mkv/strict_times.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr INT64 kMs = 10000; // in units of 100 ns
constexpr INT64 kMin = std::numeric_limits<INT64>::min();
constexpr INT64 kMax = std::numeric_limits<INT64>::max();

TEST(StrictTimesTest, TimesAreRoundedToTheNearestMillisecondHalvesUp) {
    mkv::CStrictTimes times;
    const auto startOf = [&times](INT64 start) { return times.take(start, start).startMs; };
    EXPECT_EQ(startOf(4999), 0);
    EXPECT_EQ(startOf(5000), 1);
    EXPECT_EQ(startOf(14999), 1);
    EXPECT_EQ(startOf(15000), 2);
    EXPECT_EQ(startOf(-5000), 0);
    EXPECT_EQ(startOf(-5001), -1);
    EXPECT_EQ(startOf(-15000), -1);
    EXPECT_EQ(startOf(-15001), -2);
    EXPECT_EQ(startOf(-20000), -2);
}

TEST(StrictTimesTest, TheEndIsRoundedByItself) {
    mkv::CStrictTimes times;
    const auto packet = times.take(4000, 15000); // 1.1 ms long, from 0 to 2
    EXPECT_EQ(packet.startMs, 0);
    EXPECT_EQ(packet.endMs, 2);
    EXPECT_EQ(times.take(100 * kMs, 60 * kMs).endMs, 100) << "it stops before it starts";
}

TEST(StrictTimesTest, TheShiftGrowsToTheEarliestStart) {
    mkv::CStrictTimes times;
    const auto first = times.take(40 * kMs, 80 * kMs);
    EXPECT_EQ(times.shiftMs(), 0);
    const auto second = times.take(-65000, 0); // -6.5 ms
    EXPECT_EQ(times.shiftMs(), 6);
    const auto third = times.take(-80 * kMs, -40 * kMs);
    EXPECT_EQ(times.shiftMs(), 80);
    (void)times.take(-40 * kMs, 0);
    EXPECT_EQ(times.shiftMs(), 80);
    EXPECT_EQ(times.fileMs(first.startMs), 120u);
    EXPECT_EQ(times.fileMs(second.startMs), 74u);
    EXPECT_EQ(times.fileMs(third.startMs), 0u);
}

TEST(StrictTimesTest, AfterThatAPacketThatIsStillEarlierMovesToZeroAndKeepsItsLength) {
    mkv::CStrictTimes times;
    (void)times.take(-40 * kMs, 0);
    times.fixShift();
    const auto late = times.take(-100 * kMs, -75 * kMs);
    EXPECT_EQ(times.shiftMs(), 40);
    EXPECT_EQ(times.fileMs(late.startMs), 0u);
    EXPECT_EQ(times.fileMs(late.endMs), 25u);
    EXPECT_EQ(times.fileMs(times.take(-40 * kMs, 0).startMs), 0u);
    EXPECT_EQ(times.fileMs(times.take(-39 * kMs, 0).startMs), 1u);
}

TEST(StrictTimesTest, ExtremeTimesNeitherOverflowNorWrap) {
    constexpr UINT64 kYearMs = UINT64{365} * 24 * 3600 * 1000;
    mkv::CStrictTimes times;
    const auto all = times.take(kMin, kMax);
    EXPECT_GT(times.shiftMs(), INT64{146} * static_cast<INT64>(kYearMs));
    EXPECT_EQ(times.fileMs(all.startMs), 0u);
    EXPECT_GT(times.fileMs(all.endMs), 292 * kYearMs);
    EXPECT_LE(times.fileMs(all.endMs), static_cast<UINT64>(kMax) / 1000000) << "in nanoseconds it fits 63 bits";
    times.fixShift();
    EXPECT_EQ(times.fileMs(times.take(kMin, kMin).endMs), 0u);
    EXPECT_EQ(times.fileMs(times.take(kMax, kMin).endMs), times.fileMs(all.endMs));
}

} // namespace

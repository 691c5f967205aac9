#include "mkv/time_shifter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr INT64 kMs = 10000; // in units of 100 ns
constexpr UINT64 kMsInNs = 1000000;
constexpr INT64 kMin = std::numeric_limits<INT64>::min();
constexpr INT64 kMax = std::numeric_limits<INT64>::max();
constexpr UINT64 kLatestNs = static_cast<UINT64>(kMax / 100) * 100;

void ExpectTimes(const mkv::BlockTimes& times, UINT64 timeNs, UINT64 durationNs, UINT64 endNs) {
    EXPECT_EQ(times.timeNs, timeNs);
    EXPECT_EQ(times.durationNs, durationNs);
    EXPECT_EQ(times.endNs, endNs);
}

TEST(TimeShifterTest, TimesBecomeNanoseconds) {
    mkv::CTimeShifter shifter;
    ExpectTimes(shifter.toBlockTimes(0, 3, 7), 300, 400, 700);
}

TEST(TimeShifterTest, ATrackThatStartsBelowZeroIsShiftedAsAWhole) {
    mkv::CTimeShifter shifter;
    ExpectTimes(shifter.toBlockTimes(0, -40 * kMs, 0), 0, 40 * kMsInNs, 40 * kMsInNs);
    ExpectTimes(shifter.toBlockTimes(0, 0, 40 * kMs), 40 * kMsInNs, 40 * kMsInNs, 80 * kMsInNs);
    ExpectTimes(shifter.toBlockTimes(0, 1000 * kMs, 1040 * kMs), 1040 * kMsInNs, 40 * kMsInNs, 1080 * kMsInNs);
}

TEST(TimeShifterTest, OtherTracksAreNotShifted) {
    mkv::CTimeShifter shifter;
    (void)shifter.toBlockTimes(0, -40 * kMs, 0);
    ExpectTimes(shifter.toBlockTimes(1, 10 * kMs, 30 * kMs), 10 * kMsInNs, 20 * kMsInNs, 30 * kMsInNs);
}

TEST(TimeShifterTest, OnlyTheFirstPacketDecides) {
    mkv::CTimeShifter shifter;
    (void)shifter.toBlockTimes(0, 100 * kMs, 140 * kMs);
    ExpectTimes(shifter.toBlockTimes(0, -40 * kMs, 0), 0, 40 * kMsInNs, 40 * kMsInNs);
    ExpectTimes(shifter.toBlockTimes(0, 200 * kMs, 240 * kMs), 200 * kMsInNs, 40 * kMsInNs, 240 * kMsInNs);
}

TEST(TimeShifterTest, APacketStillBelowZeroMovesToZeroAndKeepsItsLength) {
    mkv::CTimeShifter shifter;
    (void)shifter.toBlockTimes(0, -40 * kMs, 0);
    ExpectTimes(shifter.toBlockTimes(0, -100 * kMs, -70 * kMs), 0, 30 * kMsInNs, 30 * kMsInNs);
}

TEST(TimeShifterTest, APacketThatStopsBeforeItStartsHasNoDuration) {
    mkv::CTimeShifter shifter;
    ExpectTimes(shifter.toBlockTimes(0, 100 * kMs, 60 * kMs), 100 * kMsInNs, 0, 100 * kMsInNs);
    ExpectTimes(shifter.toBlockTimes(0, 100 * kMs, -60 * kMs), 100 * kMsInNs, 0, 100 * kMsInNs);
}

TEST(TimeShifterTest, ExtremeTimesNeitherOverflowNorWrap) {
    ExpectTimes(mkv::CTimeShifter().toBlockTimes(0, kMax, kMax), kLatestNs, 0, kLatestNs);
    ExpectTimes(mkv::CTimeShifter().toBlockTimes(0, 0, kMax), 0, kLatestNs, kLatestNs);
    ExpectTimes(mkv::CTimeShifter().toBlockTimes(0, kMin, kMax), 0, kLatestNs, kLatestNs);
    ExpectTimes(mkv::CTimeShifter().toBlockTimes(0, kMin, kMin), 0, 0, 0);
    ExpectTimes(mkv::CTimeShifter().toBlockTimes(0, kMax, kMin), kLatestNs, 0, kLatestNs);
    mkv::CTimeShifter shifter;
    (void)shifter.toBlockTimes(0, kMin, 0);
    ExpectTimes(shifter.toBlockTimes(0, kMax, kMax), kLatestNs, 0, kLatestNs);
    (void)shifter.toBlockTimes(1, 0, 0);
    ExpectTimes(shifter.toBlockTimes(1, kMin, kMax), 0, kLatestNs, kLatestNs);
}

} // namespace

// However long a file is, its time line has no more cells than a picture shows.
#include "report/timeline.h"

#include <gtest/gtest.h>

namespace report {
namespace {

UINT64 BytesOf(const Timeline& timeline, size_t row) {
    UINT64 bytes = 0;
    for (const Cell& cell : timeline.Row(row)) {
        bytes += cell.bytes;
    }
    return bytes;
}

TEST(Timeline, ShortFilesHaveACellATick) {
    Timeline timeline;
    const size_t row = timeline.AddRow();
    timeline.At(row, 0).bytes += 1;
    timeline.At(row, 511).bytes += 2;
    EXPECT_EQ(1u, timeline.CellTicks());
    EXPECT_EQ(512u, timeline.Cells());
    EXPECT_EQ(2u, timeline.Row(row)[511].bytes);
}

TEST(Timeline, CellsBecomeTwiceAsLongWhenTheyDoNotSufficeAndLoseNothing) {
    Timeline timeline;
    const size_t first = timeline.AddRow();
    const size_t second = timeline.AddRow();
    for (UINT64 ticks = 0; ticks < 512; ++ticks) {
        Cell& cell = timeline.At(first, ticks);
        cell.bytes += 10;
        cell.blocks += 1;
        cell.keys += 1;
        cell.lag = ticks;
    }
    timeline.At(second, 512).bytes += 7;
    EXPECT_EQ(2u, timeline.CellTicks());
    EXPECT_EQ(257u, timeline.Cells());
    EXPECT_EQ(5120u, BytesOf(timeline, first));
    EXPECT_EQ(20u, timeline.Row(first)[255].bytes);
    EXPECT_EQ(2u, timeline.Row(first)[255].blocks);
    EXPECT_EQ(2u, timeline.Row(first)[255].keys);
    EXPECT_EQ(511u, timeline.Row(first)[255].lag);
    EXPECT_EQ(0u, timeline.Row(first)[256].bytes);
    EXPECT_EQ(7u, timeline.Row(second)[256].bytes);
}

TEST(Timeline, ATimeOfDecadesMakesItNoLonger) {
    Timeline timeline;
    const size_t row = timeline.AddRow();
    timeline.At(row, 5).bytes += 1;
    timeline.At(row, UINT64{1} << 40).bytes += 1;
    EXPECT_LE(timeline.Cells(), Timeline::kMostCells);
    EXPECT_EQ(2u, BytesOf(timeline, row));
}

} // namespace
} // namespace report

#include "mkv/segment_sizes.h"

#include <gtest/gtest.h>

namespace {

TEST(SegmentSizesTest, TheDataIsEverythingBehindTheHead) {
    const SegmentSizes sizes{9, 303, 303, 1000, 200, 30000, 40};
    EXPECT_EQ(sizes.dataSize(9), 303u + 303u + 1000u + 200u + 30000u + 40u);
    EXPECT_EQ(sizes.dataSize(10), 303u + 303u + 1000u + 200u + 30000u + 40u - 1u);
}

TEST(SegmentSizesTest, SizesAboveTheFiveByteFieldAreRefused) {
    EXPECT_EQ(mkv::kMaxSegmentDataBytes, 34359738366u);
    EXPECT_TRUE(mkv::FitsSegmentSizeField(0));
    EXPECT_TRUE(mkv::FitsSegmentSizeField(34359738366u));
    EXPECT_FALSE(mkv::FitsSegmentSizeField(34359738367u)); // all ones: unknown
    EXPECT_FALSE(mkv::FitsSegmentSizeField(34359738368u));
}

} // namespace

#include "codecs/hevc_picture_order.h"

#include <gtest/gtest.h>

#include "codecs/nal_unit.h"
#include "tests/codecs/stream_writer.h"

namespace {

using namespace codecs;
using namespace test_annexb;

constexpr uint8_t kTrailing = 1; // and referred to

// The slice that the writer made, without its start code.
Bytes UnitOf(uint8_t type, uint32_t pocLsb) {
    const Bytes stream = WriteHevcSlice(type, pocLsb);
    return {stream.begin() + 4, stream.end()};
}

HevcSpsHead Sps() {
    HevcSpsHead sps;
    sps.pocLsbBits = 8;
    return sps;
}

HevcSlice Slice(uint8_t type, uint32_t pocLsb) {
    const std::optional<HevcSlice> slice = ParseHevcSlice(UnitOf(type, pocLsb), Sps(), HevcPpsHead());
    EXPECT_TRUE(slice.has_value());
    return slice.value_or(HevcSlice());
}

TEST(HevcSliceTest, TheHeadTellsTypeAndOrder) {
    const HevcSlice slice = Slice(kTrailing, 200);
    EXPECT_EQ(slice.type, kTrailing);
    EXPECT_EQ(slice.temporalId, 0);
    EXPECT_EQ(slice.pocLsb, 200u);
    EXPECT_FALSE(slice.IsIrap());
    EXPECT_TRUE(Slice(kHevcFirstIdr, 0).IsIdr());
    EXPECT_TRUE(Slice(kHevcLastIrap, 5).IsIrap());
    EXPECT_FALSE(Slice(kHevcLastIrap, 5).IsIdr());
}

TEST(HevcSliceTest, AHeadThatIsCutIsNone) {
    const Bytes unit = UnitOf(kTrailing, 200);
    EXPECT_TRUE(IsFirstHevcSegment(unit));
    EXPECT_EQ(HevcPpsIdOf(unit), 0u);
    const ByteView header = ByteView(unit).first(kHevcHeaderBytes);
    EXPECT_FALSE(IsFirstHevcSegment(header));
    EXPECT_FALSE(HevcPpsIdOf(header).has_value());
    EXPECT_FALSE(HevcPpsIdOf({}).has_value());
    EXPECT_FALSE(ParseHevcSlice(header, Sps(), HevcPpsHead()).has_value());
}

TEST(HevcPictureOrderTest, TheOrderGoesOnWhereItsLowBitsWrap) {
    HevcPictureOrder order;
    EXPECT_EQ(order.Next(Slice(kHevcFirstIdr, 0)), 0);
    EXPECT_EQ(order.Next(Slice(kTrailing, 100)), 100);
    EXPECT_EQ(order.Next(Slice(kTrailing, 200)), 200);
    EXPECT_EQ(order.Next(Slice(kTrailing, 10)), 266);
    EXPECT_EQ(order.Next(Slice(kTrailing, 250)), 250);
    EXPECT_EQ(order.Sequence(), 1u);
}

TEST(HevcPictureOrderTest, ASequenceBeginsAtAnIdrOrBehindAnEnd) {
    HevcPictureOrder order;
    EXPECT_EQ(order.Next(Slice(kHevcLastIrap, 7)), 7);
    EXPECT_EQ(order.Sequence(), 1u);
    (void)order.Next(Slice(kHevcLastIrap, 9));
    EXPECT_EQ(order.Sequence(), 1u);
    order.EndSequence();
    EXPECT_EQ(order.Next(Slice(kTrailing, 8)), 8);
    EXPECT_EQ(order.Sequence(), 1u) << "only a random access picture can begin one";
    (void)order.Next(Slice(kHevcLastIrap, 1));
    EXPECT_EQ(order.Sequence(), 2u);
    EXPECT_EQ(order.Next(Slice(kHevcFirstIdr, 0)), 0);
    EXPECT_EQ(order.Sequence(), 3u);
}

} // namespace

// The H.264 parsers one by one; how an index of pictures comes from them is the sources' business.
#include <gtest/gtest.h>

#include "codecs/avc_parameter_sets.h"
#include "codecs/avc_picture_order.h"
#include "codecs/avc_sei.h"
#include "codecs/avc_slice.h"
#include "tests/codecs/stream_writer.h"

namespace {

using namespace codecs;
using namespace test_annexb;

// What the writer made, without its start code.
Bytes UnitOf(const Bytes& stream) {
    return {stream.begin() + 4, stream.end()};
}

AvcSps Sps(const AvcSpsShape& shape = {}) {
    return ParseAvcSps(UnitOf(WriteAvcSps(shape))).value_or(AvcSps());
}

AvcSlice Slice(const AvcSliceShape& slice, const AvcSpsShape& shape = {}) {
    const std::optional<AvcPps> pps = ParseAvcPps(UnitOf(WriteAvcPps()));
    const std::optional<AvcSlice> parsed =
        ParseAvcSlice(UnitOf(WriteAvcSlice(slice, shape)), Sps(shape), pps.value_or(AvcPps()));
    EXPECT_TRUE(parsed.has_value());
    return parsed.value_or(AvcSlice());
}

AvcSliceShape Picture(uint32_t frameNum, uint32_t pocLsb) {
    AvcSliceShape shape;
    shape.type = 5;
    shape.frameNum = frameNum;
    shape.pocLsb = pocLsb;
    return shape;
}

AvcSliceShape Idr() {
    AvcSliceShape shape;
    shape.isIdr = true;
    return shape;
}

TEST(AvcParameterSetsTest, ASequenceParameterSetTellsItsPictureAndItsCounting) {
    const std::optional<AvcSps> sps = ParseAvcSps(UnitOf(WriteAvcSps()));
    ASSERT_TRUE(sps.has_value());
    EXPECT_EQ(sps->profile, 77);
    EXPECT_EQ(sps->level, 30);
    EXPECT_EQ(sps->frameNumBits, 4u);
    EXPECT_EQ(sps->pocLsbBits, 4u);
    EXPECT_EQ(sps->shape.width, 320u);
    EXPECT_EQ(sps->shape.height, 240u);
    EXPECT_EQ(sps->shape.aspectX, 320u);
    EXPECT_EQ(sps->shape.aspectY, 240u);
    EXPECT_TRUE(sps->frameMbsOnly);
}

TEST(AvcParameterSetsTest, FieldsOfMoreLinesThanAFrameMayHaveAreNone) {
    AvcSpsShape shape;
    shape.frameMbsOnly = false;
    shape.mapUnits = 2048;
    const std::optional<AvcSps> highest = ParseAvcSps(UnitOf(WriteAvcSps(shape)));
    ASSERT_TRUE(highest.has_value());
    EXPECT_EQ(highest->shape.height, 65536u - 16);
    shape.mapUnits = 2049;
    EXPECT_FALSE(ParseAvcSps(UnitOf(WriteAvcSps(shape))).has_value());
}

TEST(AvcParameterSetsTest, OffsetsOfACycleAreSigned) {
    AvcSpsShape shape;
    shape.pocType = 1;
    shape.cycle = {2, -4};
    shape.offsetForNonRefPic = -3;
    const AvcSps sps = Sps(shape);
    EXPECT_EQ(sps.pocType, 1u);
    EXPECT_TRUE(sps.deltaPicOrderAlwaysZero);
    EXPECT_EQ(sps.offsetForNonRefPic, -3);
    EXPECT_EQ(sps.offsetsForRefFrame, (std::vector<int32_t>{2, -4}));
}

TEST(AvcParameterSetsTest, ACutSetIsNone) {
    const Bytes sps = UnitOf(WriteAvcSps());
    EXPECT_FALSE(ParseAvcSps({}).has_value());
    EXPECT_FALSE(ParseAvcSps(ByteView(sps).first(4)).has_value());
    EXPECT_FALSE(ParseAvcPps({}).has_value());
    EXPECT_FALSE(ParseAvcPps(ByteView(UnitOf(WriteAvcPps())).first(1)).has_value());
}

TEST(AvcSliceTest, TheHeadTellsWhatThePictureIs) {
    AvcSliceShape shape = Picture(3, 6);
    shape.forgetsAll = true;
    const AvcSlice slice = Slice(shape);
    EXPECT_FALSE(slice.isIdr);
    EXPECT_TRUE(slice.isReference);
    EXPECT_EQ(slice.frameNum, 3u);
    EXPECT_EQ(slice.pocLsb, 6u);
    EXPECT_TRUE(slice.resetsOrder);
    EXPECT_TRUE(Slice(Idr()).isIdr);
    EXPECT_FALSE(Slice(Picture(3, 6)).resetsOrder);
}

TEST(AvcSliceTest, AHeadThatIsCutIsNone) {
    const Bytes slice = UnitOf(WriteAvcSlice(Picture(3, 6)));
    EXPECT_FALSE(AvcPpsIdOf({}).has_value());
    EXPECT_FALSE(ParseAvcSlice({}, Sps(), AvcPps()).has_value());
    EXPECT_FALSE(ParseAvcSlice(ByteView(slice).first(2), Sps(), AvcPps()).has_value());
}

TEST(AvcSliceTest, PicturesAreToldApartByTheirHeads) {
    EXPECT_FALSE(BeginsNewPicture(Slice(Picture(3, 6)), Slice(Picture(3, 6))));
    EXPECT_TRUE(BeginsNewPicture(Slice(Picture(3, 6)), Slice(Picture(4, 6))));
    EXPECT_TRUE(BeginsNewPicture(Slice(Picture(3, 6)), Slice(Picture(3, 8))));
    EXPECT_TRUE(BeginsNewPicture(Slice(Idr()), Slice(Picture(0, 0))));
}

TEST(AvcSliceTest, TwoFieldsOfOppositeParityAreAFrame) {
    AvcSpsShape fields;
    fields.frameMbsOnly = false;
    AvcSliceShape top = Picture(3, 6);
    top.bottomField = false;
    AvcSliceShape bottom = top;
    bottom.bottomField = true;
    EXPECT_TRUE(AreFieldsOfOneFrame(Slice(top, fields), Slice(bottom, fields)));
    EXPECT_FALSE(AreFieldsOfOneFrame(Slice(top, fields), Slice(top, fields)));
    EXPECT_FALSE(AreFieldsOfOneFrame(Slice(Picture(3, 6), fields), Slice(bottom, fields)));
}

TEST(AvcPictureOrderTest, TheOrderGoesOnWhereItsLowBitsWrap) {
    AvcPictureOrder order;
    EXPECT_EQ(order.Next(Slice(Idr()), Sps()), 0);
    EXPECT_EQ(order.Next(Slice(Picture(1, 6)), Sps()), 6);
    EXPECT_EQ(order.Next(Slice(Picture(2, 12)), Sps()), 12);
    EXPECT_EQ(order.Next(Slice(Picture(3, 2)), Sps()), 18);
    EXPECT_EQ(order.Next(Slice(Picture(4, 14)), Sps()), 14);
    EXPECT_EQ(order.Next(Slice(Idr()), Sps()), 0);
}

TEST(AvcSeiTest, OnlyARecoveryPointWithoutDelayIsExact) {
    EXPECT_TRUE(IsExactRecoveryPoint(UnitOf(WriteAvcRecoveryPoint(0))));
    EXPECT_FALSE(IsExactRecoveryPoint(UnitOf(WriteAvcRecoveryPoint(3))));
    EXPECT_FALSE(IsExactRecoveryPoint({}));
    EXPECT_FALSE(IsExactRecoveryPoint(Bytes{6, 6, 200, 0x80}));     // longer than the unit
    EXPECT_FALSE(IsExactRecoveryPoint(Bytes{6, 5, 1, 0x80, 0x80})); // another message
}

} // namespace

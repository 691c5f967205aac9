// The rules of counting pictures, from heads that are filled in by hand: each number is worked out from the standards'
// own text (H.264 8.2.1, H.265 8.3.1). And the small readers beside them.
#include <gtest/gtest.h>

#include <algorithm>

#include "codecs/avc_parameter_sets.h"
#include "codecs/avc_picture_order.h"
#include "codecs/avc_slice.h"
#include "codecs/hevc_picture_order.h"
#include "codecs/hevc_pps.h"
#include "codecs/hevc_slice.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"
#include "tests/codecs/stream_writer.h"

namespace {

using namespace codecs;
using mkv_test::BitWriter;
using test_annexb::Bytes;

AvcSlice Idr(uint32_t pocLsb = 0) {
    AvcSlice slice;
    slice.isIdr = true;
    slice.isReference = true;
    slice.pocLsb = pocLsb;
    return slice;
}

AvcSlice Reference(uint32_t frameNum, uint32_t pocLsb = 0) {
    AvcSlice slice;
    slice.isReference = true;
    slice.frameNum = frameNum;
    slice.pocLsb = pocLsb;
    return slice;
}

AvcSlice Unreferenced(uint32_t frameNum, uint32_t pocLsb = 0) {
    AvcSlice slice = Reference(frameNum, pocLsb);
    slice.isReference = false;
    return slice;
}

AvcSlice Field(AvcSlice slice, bool isBottom) {
    slice.isField = true;
    slice.isBottom = isBottom;
    return slice;
}

AvcSlice Resetting(AvcSlice slice) {
    slice.resetsOrder = true;
    return slice;
}

// ---- H.264, from the low bits: four of them ----

TEST(AvcOrderFromLowBits, AHalfOfTheRangeBackIsAWrapAndForwardIsNone) {
    AvcPictureOrder order;
    const AvcSps sps;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1, 8), sps), 8); // half of it forward
    EXPECT_EQ(order.Next(Reference(2, 0), sps), 16);
    EXPECT_EQ(order.Next(Reference(3, 9), sps), 9); // more than half of it forward: before
    EXPECT_EQ(order.Next(Reference(4, 2), sps), 2); // less than half of it back
}

TEST(AvcOrderFromLowBits, OnlyAReferenceIsCountedFrom) {
    AvcPictureOrder order;
    const AvcSps sps;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1, 6), sps), 6);
    EXPECT_EQ(order.Next(Unreferenced(2, 12), sps), 12);
    EXPECT_EQ(order.Next(Reference(2, 14), sps), 14);
    EXPECT_EQ(order.Next(Unreferenced(3, 5), sps), 21);
    EXPECT_EQ(order.Next(Reference(3, 7), sps), 7); // less than half of it back from 14
}

TEST(AvcOrderFromLowBits, AnIdrIsCountedFromZero) {
    AvcPictureOrder order;
    const AvcSps sps;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1, 8), sps), 8);
    EXPECT_EQ(order.Next(Reference(2, 0), sps), 16);
    EXPECT_EQ(order.Next(Idr(8), sps), 8);
    EXPECT_EQ(order.Next(Idr(9), sps), -7);
}

TEST(AvcOrderFromLowBits, AFrameHasTheLesserOrderOfItsFieldsAndAFieldItsOwn) {
    const AvcSps sps;
    AvcSlice frame = Reference(1, 6);
    for (const int32_t delta : {-3, 0, 3}) {
        frame.deltaPocBottom = delta;
        EXPECT_EQ(AvcPictureOrder().Next(frame, sps), std::min(6, 6 + delta));
        EXPECT_EQ(AvcPictureOrder().Next(Field(frame, false), sps), 6);
        EXPECT_EQ(AvcPictureOrder().Next(Field(frame, true), sps), 6 + delta);
    }
}

TEST(AvcOrderFromLowBits, APictureThatForgetsAllIsCountedAnewAndFromItsTopField) {
    const AvcSps sps;
    AvcPictureOrder order;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    AvcSlice frame = Resetting(Reference(1, 6));
    frame.deltaPocBottom = -2;
    EXPECT_EQ(order.Next(frame, sps), 0);                // the top field is 2 now
    EXPECT_EQ(order.Next(Unreferenced(1, 10), sps), 10); // half of the range from there
    EXPECT_EQ(order.Next(Unreferenced(1, 11), sps), -5);

    AvcPictureOrder fields;
    EXPECT_EQ(fields.Next(Idr(), sps), 0);
    EXPECT_EQ(fields.Next(Resetting(Field(Reference(1, 6), true)), sps), 0);
    EXPECT_EQ(fields.Next(Unreferenced(1, 8), sps), 8); // a bottom field leaves zero behind
    EXPECT_EQ(fields.Next(Unreferenced(1, 9), sps), -7);
    EXPECT_EQ(fields.Next(Resetting(Field(Reference(2, 5), false)), sps), 0);
    EXPECT_EQ(fields.Next(Unreferenced(1, 8), sps), 8);
}

// ---- H.264, from a cycle of offsets ----

AvcSps CycleSps() {
    AvcSps sps;
    sps.pocType = 1;
    sps.offsetsForRefFrame = {2, 4};
    sps.offsetForNonRefPic = -1;
    sps.offsetForTopToBottomField = 1;
    return sps;
}

TEST(AvcOrderFromACycle, FramesAddUpTheirOffsets) {
    AvcPictureOrder order;
    const AvcSps sps = CycleSps();
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1), sps), 2);
    EXPECT_EQ(order.Next(Reference(2), sps), 6);
    EXPECT_EQ(order.Next(Unreferenced(3), sps), 5);
    EXPECT_EQ(order.Next(Reference(3), sps), 8);
    EXPECT_EQ(order.Next(Reference(4), sps), 12);
    EXPECT_EQ(order.Next(Reference(15), sps), 44);
    EXPECT_EQ(order.Next(Reference(0), sps), 48); // frame numbers wrap at 16
    EXPECT_EQ(order.Next(Reference(1), sps), 50);
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1), sps), 2);
}

TEST(AvcOrderFromACycle, DifferencesAreAddedAndTheBottomFieldHasItsOwnOffset) {
    const AvcSps sps = CycleSps();
    AvcSlice frame = Reference(1);
    frame.deltaPoc[0] = 3;
    EXPECT_EQ(AvcPictureOrder().Next(frame, sps), 5);
    frame.deltaPoc[1] = -7;
    EXPECT_EQ(AvcPictureOrder().Next(frame, sps), -1);             // of the bottom field
    EXPECT_EQ(AvcPictureOrder().Next(Field(frame, true), sps), 6); // which as a picture of its own has no difference
    EXPECT_EQ(AvcPictureOrder().Next(Field(frame, false), sps), 5);
}

TEST(AvcOrderFromACycle, WithoutAnyOffsetsOnlyTheDifferencesCount) {
    AvcSps sps = CycleSps();
    sps.offsetsForRefFrame.clear();
    EXPECT_EQ(AvcPictureOrder().Next(Reference(5), sps), 0);
    EXPECT_EQ(AvcPictureOrder().Next(Unreferenced(5), sps), -1);
    EXPECT_EQ(AvcPictureOrder().Next(Unreferenced(0), CycleSps()), -1); // no frame before it
}

// ---- H.264, from frame numbers ----

TEST(AvcOrderFromFrameNumbers, TwoAFrameAndOneLessWhereNobodyRefersToIt) {
    AvcPictureOrder order;
    AvcSps sps;
    sps.pocType = 2;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1), sps), 2);
    EXPECT_EQ(order.Next(Unreferenced(2), sps), 3);
    EXPECT_EQ(order.Next(Reference(2), sps), 4);
    EXPECT_EQ(order.Next(Reference(15), sps), 30);
    EXPECT_EQ(order.Next(Reference(15), sps), 30); // the same number is no wrap
    EXPECT_EQ(order.Next(Reference(0), sps), 32);
    EXPECT_EQ(order.Next(Reference(1), sps), 34);
    EXPECT_EQ(order.Next(Resetting(Reference(2)), sps), 0);
    EXPECT_EQ(order.Next(Reference(1), sps), 2);
    EXPECT_EQ(order.Next(Reference(0), sps), 32);
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    EXPECT_EQ(order.Next(Reference(1), sps), 2);
}

// ---- Which slices are one picture ----

TEST(AvcPicture, EachDifferenceInTheHeadBeginsANewOne) {
    const AvcSlice first = Reference(3, 6);
    EXPECT_FALSE(BeginsNewPicture(first, first));
    void (*const changes[])(AvcSlice&) = {
        [](AvcSlice& slice) { slice.frameNum = 4; },        [](AvcSlice& slice) { slice.ppsId = 1; },
        [](AvcSlice& slice) { slice.isField = true; },      [](AvcSlice& slice) { slice.isBottom = true; },
        [](AvcSlice& slice) { slice.isReference = false; }, [](AvcSlice& slice) { slice.isIdr = true; },
        [](AvcSlice& slice) { slice.idrPicId = 1; },        [](AvcSlice& slice) { slice.pocLsb = 7; },
        [](AvcSlice& slice) { slice.deltaPocBottom = 1; },  [](AvcSlice& slice) { slice.deltaPoc[0] = 1; },
        [](AvcSlice& slice) { slice.deltaPoc[1] = 1; },
    };
    for (const auto change : changes) {
        AvcSlice next = first;
        change(next);
        EXPECT_TRUE(BeginsNewPicture(first, next)) << &change - changes;
        EXPECT_TRUE(BeginsNewPicture(next, first)) << &change - changes;
    }
}

TEST(AvcPicture, TwoFieldsAreAFrameOnlyWhereAllElseIsAlike) {
    const AvcSlice top = Field(Reference(3), false);
    const AvcSlice bottom = Field(Reference(3), true);
    EXPECT_TRUE(AreFieldsOfOneFrame(top, bottom));
    EXPECT_TRUE(AreFieldsOfOneFrame(bottom, top));
    EXPECT_TRUE(AreFieldsOfOneFrame(Field(Idr(), false), Field(Reference(0), true)));
    EXPECT_FALSE(AreFieldsOfOneFrame(top, top));
    EXPECT_FALSE(AreFieldsOfOneFrame(top, Field(Reference(4), true)));
    EXPECT_FALSE(AreFieldsOfOneFrame(top, Field(Unreferenced(3), true)));
    EXPECT_FALSE(AreFieldsOfOneFrame(Field(Idr(), false), Field(Idr(), true)));
    AvcSlice frame = bottom;
    frame.isField = false;
    EXPECT_FALSE(AreFieldsOfOneFrame(top, frame));
    EXPECT_FALSE(AreFieldsOfOneFrame(frame, top));
}

// ---- H.265 ----

TEST(HevcPictureHead, APictureParameterSetTellsWhatIsInFrontOfTheOrder) {
    BitWriter bits;
    bits.UE(5).UE(3).Flag(true).Flag(true).Bits(5, 3).Flag(true);
    Bytes unit{0x44, 1};
    const Bytes payload = bits.Bytes();
    unit.insert(unit.end(), payload.begin(), payload.end());
    const auto pps = ParseHevcPpsHead(unit);
    ASSERT_TRUE(pps.has_value());
    EXPECT_EQ(pps->id, 5u);
    EXPECT_EQ(pps->spsId, 3u);
    EXPECT_TRUE(pps->outputFlagPresent);
    EXPECT_EQ(pps->extraSliceHeaderBits, 5u);
    EXPECT_FALSE(ParseHevcPpsHead(ByteView(unit).first(3)).has_value());
}

TEST(HevcPictureHead, AllThatMayStandInFrontOfTheOrderIsReadPast) {
    HevcSpsHead sps;
    sps.pocLsbBits = 8;
    sps.separateColourPlanes = true;
    HevcPpsHead pps;
    pps.outputFlagPresent = true;
    pps.extraSliceHeaderBits = 3;
    BitWriter bits;
    bits.Flag(true).UE(7).Bits(5, 3).UE(1).Flag(true).Bits(2, 2).Bits(0xa5, 8).Bits(0xffff, 16);
    Bytes unit{1 << 1, 1};
    const Bytes payload = bits.Bytes();
    unit.insert(unit.end(), payload.begin(), payload.end());
    const auto slice = ParseHevcSlice(unit, sps, pps);
    ASSERT_TRUE(slice.has_value());
    EXPECT_EQ(slice->pocLsb, 0xa5u);
    EXPECT_EQ(HevcPpsIdOf(unit), 7u);
}

TEST(HevcOrder, OthersAreCountedFromReferencesOfTheLowestLayerThatLeadNothing) {
    const auto next = [](HevcPictureOrder& order, uint8_t type, uint32_t pocLsb, uint8_t temporalId = 0) {
        HevcSlice slice;
        slice.type = type;
        slice.temporalId = temporalId;
        slice.pocLsb = pocLsb;
        slice.pocLsbBits = 8;
        return order.Next(slice);
    };
    for (const uint8_t type : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}) {
        const bool isLeading = type >= 6 && type <= 9;
        for (const uint8_t temporalId : {0, 1}) {
            HevcPictureOrder order;
            EXPECT_EQ(next(order, kHevcFirstIdr, 0), 0);
            EXPECT_EQ(next(order, type, 100, temporalId), 100);
            const bool isCounted = type % 2 == 1 && !isLeading && temporalId == 0;
            EXPECT_EQ(next(order, 1, 200), isCounted ? 200 : -56) << int{type};
        }
    }
    HevcPictureOrder order;
    EXPECT_EQ(next(order, kHevcFirstIdr, 0), 0);
    EXPECT_EQ(next(order, 1, 128), 128); // half of the range forward
    EXPECT_EQ(next(order, 1, 0), 256);   // and half of it back
    EXPECT_EQ(next(order, 1, 129), 129);
}

// ---- H.264: what is read past ----

Bytes UnitOf(const Bytes& stream) {
    return {stream.begin() + 4, stream.end()}; // without the start code
}

TEST(AvcReadsPast, ScalingLists) {
    constexpr uint64_t kMinus8 = 16; // signed numbers as they are coded
    constexpr uint64_t k248 = 495;
    for (const bool isFullColour : {false, true}) {
        BitWriter bits;
        bits.Bits(100, 8).Bits(0, 8).Bits(30, 8).UE(0).UE(isFullColour ? 3 : 1);
        if (isFullColour) {
            bits.Flag(false); // separate planes
        }
        bits.UE(0).UE(0).Flag(false).Flag(true);
        bits.Flag(true).UEs(0, 16);             // a list of 16
        bits.Flag(true).UE(kMinus8);            // ends at zero
        bits.Flag(true).UE(0).UE(k248);         // so does this
        bits.Flag(true).UE(2).UE(1).UEs(0, 14); // one less and one more
        bits.Flag(false).Flag(false);
        bits.Flag(true).UEs(0, 64); // a list of 64
        bits.Flag(true).UE(kMinus8);
        if (isFullColour) {
            bits.Flag(false).Flag(true).UEs(0, 64).Flag(false).Flag(true).UE(kMinus8);
        }
        bits.UE(0).UE(0).UE(0).UE(1).Flag(false); // order, references
        bits.UE(19).UE(14).Flag(true).Flag(true).Flag(false).Flag(false).Flag(true);
        const auto sps = ParseAvcSps(UnitOf(test_annexb::Unit({0x67}, bits)));
        ASSERT_TRUE(sps.has_value()) << isFullColour;
        EXPECT_EQ(sps->shape.width, 320u) << isFullColour;
        EXPECT_EQ(sps->shape.height, 240u) << isFullColour;
        EXPECT_FALSE(sps->isMonochrome);
        EXPECT_FALSE(sps->separateColourPlanes);
    }
}

TEST(AvcReadsPast, SliceGroupsOfEveryType) {
    for (uint64_t type = 0; type <= 6; ++type) {
        BitWriter bits;
        bits.UE(2).UE(1).Flag(false).Flag(true).UE(2).UE(type); // three groups
        if (type == 0) {
            bits.UEs(7, 3);
        } else if (type == 2) {
            bits.UEs(7, 4);
        } else if (type >= 3 && type <= 5) {
            bits.Flag(true).UE(7);
        } else if (type == 6) {
            bits.UE(4).Bits(0x155, 10); // five units of two bits
        }
        bits.UE(3).UE(0).Flag(true).Bits(2, 2).UEs(0, 3).Bits(0, 2).Flag(true).Flag(true);
        const auto pps = ParseAvcPps(UnitOf(test_annexb::Unit({0x68}, bits)));
        ASSERT_TRUE(pps.has_value()) << type;
        EXPECT_EQ(pps->id, 2u);
        EXPECT_EQ(pps->spsId, 1u);
        EXPECT_TRUE(pps->bottomFieldPicOrderPresent);
        EXPECT_EQ(pps->refIdxDefault[0], 4u) << type;
        EXPECT_EQ(pps->refIdxDefault[1], 1u) << type;
        EXPECT_TRUE(pps->weightedPrediction) << type;
        EXPECT_EQ(pps->weightedBiprediction, 2u) << type;
        EXPECT_TRUE(pps->redundantPicCntPresent) << type;
    }
}

// One entry's weights.
void WriteWeights(BitWriter& bits, bool hasLuma, bool hasChroma) {
    bits.Flag(hasLuma).UEs(3, hasLuma ? 2 : 0).Flag(hasChroma).UEs(1, hasChroma ? 4 : 0);
}

TEST(AvcReadsPast, ListsAndWeightsUpToTheMarkings) {
    AvcPps pps;
    pps.weightedPrediction = true;
    pps.weightedBiprediction = 1;
    for (const bool isB : {false, true}) {
        for (const bool forgetsAll : {false, true}) {
            BitWriter bits;
            bits.UE(0).UE(isB ? 6 : 5).UE(0).Bits(1, 4).Bits(2, 4);
            if (isB) {
                bits.Flag(true); // direct prediction
            }
            bits.Flag(true).UE(1); // two entries
            if (isB) {
                bits.UE(2); // and three
            }
            bits.Flag(true).UE(0).UE(3).UE(1).UE(2).UE(3); // changes of the list, and their end
            if (isB) {
                bits.Flag(false);
            }
            bits.UE(5).UE(4);
            WriteWeights(bits, true, true);
            WriteWeights(bits, false, true);
            for (int entry = 0; isB && entry < 3; ++entry) {
                WriteWeights(bits, true, false);
            }
            bits.Flag(true).UE(1).UE(6).UE(3).UE(4).UE(2);
            if (forgetsAll) {
                bits.UE(5);
            }
            bits.UE(0).UEs(5, 4).Flag(true); // behind the end nothing is a marking
            const auto slice = ParseAvcSlice(UnitOf(test_annexb::Unit({0x41}, bits)), AvcSps(), pps);
            ASSERT_TRUE(slice.has_value());
            EXPECT_EQ(slice->resetsOrder, forgetsAll) << isB;
            EXPECT_EQ(slice->pocLsb, 2u);
        }
    }
}

TEST(AvcReadsPast, AFieldHasNoDifferenceToItself) {
    AvcSps sps;
    sps.frameMbsOnly = false;
    AvcPps pps;
    pps.bottomFieldPicOrderPresent = true;
    BitWriter bits;
    bits.UE(0).UE(7).UE(0).Bits(1, 4).Flag(true).Flag(true).Bits(2, 4).Flag(false).UEs(9, 3);
    const auto field = ParseAvcSlice(UnitOf(test_annexb::Unit({0x41}, bits)), sps, pps);
    ASSERT_TRUE(field.has_value());
    EXPECT_TRUE(field->isField);
    EXPECT_TRUE(field->isBottom);
    EXPECT_EQ(field->deltaPocBottom, 0);
    sps.pocType = 1;
    BitWriter differences;
    differences.UE(0).UE(7).UE(0).Bits(1, 4).Flag(false).UE(5).UE(6).Flag(false).UEs(9, 3);
    const auto frame = ParseAvcSlice(UnitOf(test_annexb::Unit({0x41}, differences)), sps, pps);
    ASSERT_TRUE(frame.has_value());
    EXPECT_EQ(frame->deltaPoc[0], 3);
    EXPECT_EQ(frame->deltaPoc[1], -3);
}

// ---- Lengths ----

TEST(WidenedLengths, EachUnitGetsALengthOfFourBytes) {
    const Bytes narrow{0, 2, 9, 8, 0, 0, 0, 1, 7};
    const Bytes wide{0, 0, 0, 2, 9, 8, 0, 0, 0, 0, 0, 0, 0, 1, 7};
    EXPECT_EQ(WidenLengths(narrow, 2, 100), wide);
    EXPECT_EQ(WidenLengths(narrow, 2, wide.size()), wide);
    EXPECT_FALSE(WidenLengths(narrow, 2, wide.size() - 1).has_value());
    EXPECT_EQ(WidenLengths({}, 2, 100), Bytes());
}

TEST(WidenedLengths, WhatDoesNotFitItsLengthIsLeftOut) {
    const Bytes wide{0, 0, 0, 1, 9};
    EXPECT_EQ(WidenLengths(Bytes{1, 9, 2, 8}, 1, 100), wide);
    EXPECT_EQ(WidenLengths(Bytes{1, 9, 0}, 1, 100), wide); // a length alone
    EXPECT_EQ(WidenLengths(Bytes{1}, 1, 100), Bytes());
}

} // namespace

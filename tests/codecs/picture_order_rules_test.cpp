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

TEST(AvcOrderFromACycle, EachLengthOfACycleAddsUp) {
    AvcSps sps = CycleSps();
    sps.offsetsForRefFrame = {4};
    EXPECT_EQ(AvcPictureOrder().Next(Reference(3), sps), 12);
    sps.offsetsForRefFrame = {1, 10, 100};
    AvcPictureOrder order;
    EXPECT_EQ(order.Next(Idr(), sps), 0);
    uint32_t frameNum = 0;
    for (const int32_t expected : {1, 11, 111, 112, 122, 222, 223}) {
        EXPECT_EQ(order.Next(Reference(++frameNum), sps), expected);
    }
    EXPECT_EQ(AvcPictureOrder().Next(Unreferenced(1), sps), -1); // the one frame is this one
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

TEST(HevcPictureHead, EachEdgeOfTheWindowIsItsOwn) {
    HevcSpsHead sps;
    sps.chromaFormatIdc = 1;
    sps.codedWidth = 64;
    sps.codedHeight = 64;
    sps.conformanceWindow = {3, 5, 7, 11};
    EXPECT_EQ(sps.Shape().width, 48u);
    EXPECT_EQ(sps.Shape().height, 28u);
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
    for (uint8_t type = 0; type < 16; ++type) {
        const bool isLeading = type >= 6 && type <= 9;
        for (uint8_t temporalId = 0; temporalId < 2; ++temporalId) {
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
    EXPECT_EQ(next(order, 1, 39), 39); // more than a third of it back, less than half
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

struct SliceKind {
    bool isB = false;
    bool hasOwnCounts = false; // of the lists' entries
    bool hasWeights = false;
    bool hasChroma = true;
    bool forgetsAll = false;
};

// A slice with all that stands in front of the markings. What they are of would be markings, too: those that change the
// answer.
Bytes SliceOf(const SliceKind& kind) {
    BitWriter bits;
    bits.UE(0).UE(kind.isB ? 6 : 5).UE(0).Bits(1, 4).Bits(2, 4);
    if (kind.isB) {
        bits.Flag(true); // direct prediction
    }
    bits.Flag(kind.hasOwnCounts);
    if (kind.hasOwnCounts) {
        bits.UE(1).UEs(2, kind.isB ? 1 : 0);
    }
    bits.Flag(true).UE(0).UE(3).UE(1).UE(2).UE(3); // changes of the list, and their end
    if (kind.isB) {
        bits.Flag(false);
    }
    if (kind.hasWeights) {
        bits.UE(5).UEs(4, kind.hasChroma ? 1 : 0);
        const unsigned entries = (kind.hasOwnCounts ? 2 : 1) + (kind.isB ? 3 : 0); // the sets below say 1 and 3
        for (unsigned entry = 0; entry < entries; ++entry) {
            const bool hasLuma = entry % 2 == 0;
            bits.Flag(hasLuma).UEs(3, hasLuma ? 2 : 0);
            if (kind.hasChroma) {
                bits.Flag(!hasLuma).UEs(1, hasLuma ? 0 : 4);
            }
        }
    }
    const uint64_t operand = kind.forgetsAll ? 0 : 5;
    bits.Flag(true).UE(1).UE(operand).UE(3).UEs(operand, 2).UE(2).UE(operand);
    if (kind.forgetsAll) {
        bits.UE(5);
    }
    bits.UE(0).UEs(5, 4).Flag(true); // behind the end nothing is a marking
    return UnitOf(test_annexb::Unit({0x21}, bits));
}

AvcPps PpsWithThreeEntriesBackwards() {
    AvcPps pps;
    pps.refIdxDefault[0] = 1;
    pps.refIdxDefault[1] = 3;
    return pps;
}

TEST(AvcReadsPast, ListsAndWeightsUpToTheMarkings) {
    for (unsigned bits = 0; bits < 32; ++bits) {
        const SliceKind kind{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0, (bits & 16) != 0};
        AvcPps pps = PpsWithThreeEntriesBackwards();
        pps.weightedPrediction = kind.isB ? !kind.hasWeights : kind.hasWeights; // the other kind's says nothing
        pps.weightedBiprediction = kind.isB ? (kind.hasWeights ? 1 : 2) : (kind.hasWeights ? 0 : 1);
        AvcSps sps;
        sps.isMonochrome = !kind.hasChroma;
        const auto slice = ParseAvcSlice(SliceOf(kind), sps, pps);
        ASSERT_TRUE(slice.has_value()) << bits;
        EXPECT_EQ(slice->resetsOrder, kind.forgetsAll) << bits;
        EXPECT_TRUE(slice->isReference) << bits;
        EXPECT_EQ(slice->pocLsb, 2u) << bits;
    }
}

TEST(AvcReadsPast, OnlyReferencesThatAreNoIdrHaveMarkings) {
    for (const uint8_t header : std::initializer_list<uint8_t>{0x65, 0x01, 0x41}) {
        BitWriter bits;
        bits.UE(0).UE(7).UE(0).Bits(1, 4).UEs(0, header == 0x65 ? 1 : 0).Bits(2, 4);
        bits.Flag(true).UE(5).UE(0).Flag(true);
        const auto slice = ParseAvcSlice(UnitOf(test_annexb::Unit({header}, bits)), AvcSps(), AvcPps());
        ASSERT_TRUE(slice.has_value());
        EXPECT_EQ(slice->resetsOrder, header == 0x41);
    }
}

TEST(AvcReadsPast, APictureIsRedundantUnlessItsCountIsZero) {
    AvcPps pps;
    for (const bool hasCount : {false, true}) {
        pps.redundantPicCntPresent = hasCount;
        for (const uint64_t count : {0, 1, 2}) {
            BitWriter bits;
            bits.UE(0).UE(7).UE(0).Bits(1, 4).Bits(2, 4).UE(count).Flag(false).Flag(true);
            const auto slice = ParseAvcSlice(UnitOf(test_annexb::Unit({0x01}, bits)), AvcSps(), pps);
            ASSERT_TRUE(slice.has_value());
            EXPECT_EQ(slice->isRedundant, hasCount && count != 0) << count;
        }
    }
}

TEST(AvcReadsPast, ACropOfAllFourSides) {
    for (const bool isHigh : {false, true}) {
        for (const uint64_t chroma : {0, 1, 2, 3}) {
            BitWriter bits;
            bits.Bits(isHigh ? 100 : 77, 8).Bits(0, 8).Bits(30, 8).UE(0);
            if (isHigh) {
                bits.UE(chroma);
                if (chroma == 3) {
                    bits.Flag(false);
                }
                bits.UE(0).UE(0).Flag(false).Flag(false);
            }
            bits.UE(0).UE(0).UE(0).UE(1).Flag(false);
            bits.UE(19).UE(14).Flag(true).Flag(true).Flag(true).UE(1).UE(2).UE(3).UE(4).Flag(false).Flag(true);
            const auto sps = ParseAvcSps(UnitOf(test_annexb::Unit({0x67}, bits)));
            ASSERT_TRUE(sps.has_value());
            const bool isHalfWide = !isHigh || chroma == 1 || chroma == 2;
            const bool isHalfHigh = !isHigh || chroma == 1;
            EXPECT_EQ(sps->shape.width, isHalfWide ? 314u : 317u) << chroma;
            EXPECT_EQ(sps->shape.height, isHalfHigh ? 226u : 233u) << chroma;
            EXPECT_EQ(sps->isMonochrome, isHigh && chroma == 0);
        }
    }
}

TEST(AvcReadsPast, TheShapeOfAPixel) {
    struct Case {
        bool hasVui;
        bool hasAspect;
        unsigned index;
        unsigned x;
        unsigned y;
        unsigned expectedX;
        unsigned expectedY;
    };
    for (const Case& pixel :
         {Case{false, true, 2, 0, 0, 1, 1}, Case{true, false, 2, 0, 0, 1, 1}, Case{true, true, 3, 0, 0, 10, 11},
          Case{true, true, 16, 0, 0, 2, 1}, Case{true, true, 17, 0, 0, 1, 1}, Case{true, true, 254, 5, 7, 1, 1},
          Case{true, true, 255, 5, 7, 5, 7}, Case{true, true, 255, 0, 7, 1, 1}, Case{true, true, 255, 5, 0, 1, 1}}) {
        BitWriter bits;
        bits.Bits(77, 8).Bits(0, 8).Bits(30, 8).UE(0).UE(0).UE(0).UE(0).UE(1).Flag(false);
        bits.UE(19).UE(14).Flag(true).Flag(true).Flag(false);
        bits.Flag(pixel.hasVui).Flag(pixel.hasAspect).Bits(pixel.index, 8).Bits(pixel.x, 16).Bits(pixel.y, 16);
        bits.Bits(0xff, 8);
        const auto sps = ParseAvcSps(UnitOf(test_annexb::Unit({0x67}, bits)));
        ASSERT_TRUE(sps.has_value());
        EXPECT_EQ(sps->shape.aspectX, 320 * pixel.expectedX) << pixel.index;
        EXPECT_EQ(sps->shape.aspectY, 240 * pixel.expectedY) << pixel.index;
    }
}

TEST(AvcReadsPast, ThePlaneOfASlice) {
    AvcSps sps;
    sps.separateColourPlanes = true;
    BitWriter bits;
    bits.UE(0).UE(7).UE(0).Bits(2, 2).Bits(5, 4).Bits(6, 4).Flag(false).Flag(true);
    const auto slice = ParseAvcSlice(UnitOf(test_annexb::Unit({0x41}, bits)), sps, AvcPps());
    ASSERT_TRUE(slice.has_value());
    EXPECT_EQ(slice->frameNum, 5u);
    EXPECT_EQ(slice->pocLsb, 6u);
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
    BitWriter ofAField;
    ofAField.UE(0).UE(7).UE(0).Bits(1, 4).Flag(true).Flag(false).UE(5).Flag(false).UEs(9, 3);
    const auto top = ParseAvcSlice(UnitOf(test_annexb::Unit({0x41}, ofAField)), sps, pps);
    ASSERT_TRUE(top.has_value());
    EXPECT_EQ(top->deltaPoc[0], 3);
    EXPECT_EQ(top->deltaPoc[1], 0);
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

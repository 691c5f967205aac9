#include "codecs/hevc_sps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/codecs/hevc_sps_writer.h"
#include "tests/support/hex_bytes.h"

namespace {

using codecs::HevcSps;
using codecs::ParseHevcSps;
using codecs::ParseHevcSpsHead;
using mkv_test::Bytes;
using mkv_test::HevcSpsShape;
using mkv_test::Hrd;
using mkv_test::ScalingLists;
using mkv_test::ShortTermSet;
using mkv_test::Vui;
using mkv_test::WriteHevcSps;

// The last number that is read: it comes out right only when everything in front of it was read with its width.
constexpr uint32_t kLastNumber = 1234;

Vui LastNumberVui() {
    Vui vui;
    vui.minSpatialSegmentationIdc = kLastNumber;
    return vui;
}

HevcSpsShape ShapeWithLastNumber() {
    HevcSpsShape shape;
    shape.vui = LastNumberVui();
    return shape;
}

uint32_t LastNumberOf(const HevcSpsShape& shape) {
    return ParseHevcSps(WriteHevcSps(shape)).minSpatialSegmentationIdc;
}

TEST(HevcSpsTest, ReadsTheProfileTierAndLevel) {
    HevcSpsShape shape;
    shape.profileSpace = 2;
    shape.tier = true;
    shape.profileIdc = 21;
    shape.compatibilityFlags = 0x81234567;
    shape.constraintFlags = 0xb00000fedcbaULL;
    shape.level = 153;
    const HevcSps sps = ParseHevcSps(WriteHevcSps(shape));
    EXPECT_EQ(sps.generalProfileSpace, 2);
    EXPECT_EQ(sps.generalTierFlag, 1);
    EXPECT_EQ(sps.generalProfileIdc, 21);
    EXPECT_EQ(sps.generalProfileCompatibilityFlags, 0x81234567u);
    EXPECT_EQ(sps.generalConstraintFlags, 0xb00000fedcbaULL);
    EXPECT_EQ(sps.generalLevelIdc, 153);
}

TEST(HevcSpsTest, ReadsChromaFormatAndBitDepths) {
    for (const uint32_t chroma : {0u, 1u, 2u, 3u}) { // 3 carries one flag more
        HevcSpsShape shape = ShapeWithLastNumber();
        shape.chromaFormatIdc = chroma;
        shape.bitDepthLumaMinus8 = 2;
        shape.bitDepthChromaMinus8 = 4;
        shape.hasConformanceWindow = true;
        const HevcSps sps = ParseHevcSps(WriteHevcSps(shape));
        EXPECT_EQ(sps.chromaFormatIdc, chroma);
        EXPECT_EQ(sps.bitDepthLumaMinus8, 2u);
        EXPECT_EQ(sps.bitDepthChromaMinus8, 4u);
        EXPECT_EQ(sps.minSpatialSegmentationIdc, kLastNumber);
    }
}

TEST(HevcSpsTest, TheHeadTellsTheVisiblePictureOfEveryChromaFormat) {
    // 4 samples of the chroma format are cut off each side of 320 by 240 pixels.
    const std::array<std::array<uint32_t, 2>, 4> expected{{{312, 232}, {304, 224}, {304, 232}, {312, 232}}};
    for (uint32_t chroma = 0; chroma < expected.size(); ++chroma) {
        HevcSpsShape shape;
        shape.chromaFormatIdc = chroma;
        shape.hasConformanceWindow = true;
        shape.log2MaxPocLsbMinus4 = chroma;
        const auto head = ParseHevcSpsHead(WriteHevcSps(shape));
        ASSERT_TRUE(head.has_value()) << chroma;
        EXPECT_EQ(head->Shape().width, expected[chroma][0]) << chroma;
        EXPECT_EQ(head->Shape().height, expected[chroma][1]) << chroma;
        EXPECT_EQ(head->Shape().aspectX, expected[chroma][0]) << chroma;
        EXPECT_EQ(head->Shape().aspectY, expected[chroma][1]) << chroma;
        EXPECT_EQ(head->pocLsbBits, chroma + 4) << chroma;
    }
}

TEST(HevcSpsTest, AWindowThatLeavesNothingIsPassedOver) {
    codecs::HevcSpsHead head;
    head.chromaFormatIdc = 1;
    head.codedWidth = 64;
    head.codedHeight = 64;
    head.conformanceWindow = {16, 16, 16, 15};
    EXPECT_EQ(head.Shape().width, 64u);
    EXPECT_EQ(head.Shape().height, 2u);
}

TEST(HevcSpsTest, ReadsSubLayersWithEveryMixOfProfileAndLevel) {
    for (unsigned layers = 0; layers <= 6; ++layers) {
        for (unsigned mix = 0; mix < 4; ++mix) {
            HevcSpsShape shape = ShapeWithLastNumber();
            shape.maxSubLayersMinus1 = layers;
            shape.temporalIdNesting = mix == 1;
            shape.hasOrderingForEachSubLayer = mix % 2 == 0;
            shape.subLayers.assign(layers, {(mix & 1) != 0, (mix & 2) != 0});
            const HevcSps sps = ParseHevcSps(WriteHevcSps(shape));
            EXPECT_EQ(sps.maxSubLayersMinus1, layers);
            EXPECT_EQ(sps.temporalIdNesting, mix == 1);
            EXPECT_EQ(sps.chromaFormatIdc, 1u);
            EXPECT_EQ(sps.minSpatialSegmentationIdc, kLastNumber) << layers << " layers, mix " << mix;
        }
    }
}

TEST(HevcSpsTest, ReadsPastScalingLists) {
    for (const ScalingLists lists : {ScalingLists::Off, ScalingLists::Default, ScalingLists::Coded}) {
        HevcSpsShape shape = ShapeWithLastNumber();
        shape.scalingLists = lists;
        EXPECT_EQ(LastNumberOf(shape), kLastNumber);
    }
}

TEST(HevcSpsTest, ReadsPastPcmParameters) {
    HevcSpsShape shape = ShapeWithLastNumber();
    shape.hasPcm = true;
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);
}

TEST(HevcSpsTest, ReadsPastCodedShortTermReferencePictureSets) {
    HevcSpsShape shape = ShapeWithLastNumber();
    shape.shortTermSets = {{{0, 1, 2}, {0}}, {{}, {}}, {{4}, {}}, {{}, {1, 1}}};
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);
    shape.shortTermSets.assign(64, ShortTermSet{std::vector<uint32_t>(16, 0), std::vector<uint32_t>(16, 32767)});
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);
}

TEST(HevcSpsTest, ReadsPastPredictedShortTermReferencePictureSets) {
    HevcSpsShape shape = ShapeWithLastNumber();
    // -1 -3 +2; shifted by -2: -3 -5 (0 falls out) and the reference itself, -2.
    ShortTermSet shifted;
    shifted.isPredicted = true;
    shifted.isNegative = true;
    shifted.absDeltaMinus1 = 1;
    shifted.flags = {"1", "01", "1", "1"};
    // That leaves three entries, hence four flags for the next; two of them drop their entry.
    ShortTermSet dropped;
    dropped.isPredicted = true;
    dropped.flags = {"00", "1", "00", "01"};
    // And that leaves two: three flags.
    ShortTermSet last;
    last.isPredicted = true;
    last.flags = {"1", "1", "1"};
    shape.shortTermSets = {{{0, 1}, {1}}, shifted, dropped, last};
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);
}

// The flags of a predicted set follow the entries of the set before in their order, so that order decides which entry
// falls out when it meets the picture itself.
TEST(HevcSpsTest, KeepsTheOrderOfEntriesThroughPrediction) {
    HevcSpsShape shape = ShapeWithLastNumber();
    // -1 and +1, shifted by +3: 2, 4, and the reference at 3; in order: 2, 3, 4.
    ShortTermSet forward;
    forward.isPredicted = true;
    forward.absDeltaMinus1 = 2;
    forward.flags = {"1", "1", "1"};
    // Shifted by -3: -1, 0 and 1, and the reference at -3. The 0 is the picture itself, and is dropped as well:
    // -1, -3 and 1 stay. In another order the second flag would drop one of the others, and two would stay.
    ShortTermSet back;
    back.isPredicted = true;
    back.isNegative = true;
    back.absDeltaMinus1 = 2;
    back.flags = {"1", "00", "1", "1"};
    ShortTermSet last;
    last.isPredicted = true;
    last.flags = {"1", "1", "1", "1"};
    shape.shortTermSets = {{{0}, {0}}, forward, back, last};
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);

    shape.shortTermSets[2].flags = {"00", "1", "1", "1"}; // -1 dropped, 0 falls out: 1, -3 stay
    shape.shortTermSets[3].flags = {"1", "1", "1"};
    EXPECT_EQ(LastNumberOf(shape), kLastNumber);
}

TEST(HevcSpsTest, ReadsPastLongTermReferencePicturesOfEveryWidth) {
    for (uint32_t log2 = 0; log2 <= 12; ++log2) {
        HevcSpsShape shape = ShapeWithLastNumber();
        shape.log2MaxPocLsbMinus4 = log2;
        shape.longTermPictures = 32;
        EXPECT_EQ(LastNumberOf(shape), kLastNumber) << log2;
    }
}

TEST(HevcSpsTest, ReadsPastEveryOptionalPartOfTheVui) {
    for (unsigned mask = 0; mask < 256; ++mask) {
        HevcSpsShape shape;
        Vui vui = LastNumberVui();
        if ((mask & 1) != 0) {
            vui.aspectRatioIdc = static_cast<uint8_t>((mask & 2) != 0 ? 255 : 3);
        }
        vui.signal.hasOverscan = (mask & 4) != 0;
        vui.signal.fullRange = (mask & 8) != 0 ? std::optional(true) : std::nullopt;
        vui.signal.colours = (mask & 16) != 0 ? std::optional(0x010101u) : std::nullopt;
        vui.signal.chromaLocation = (mask & 32) != 0 ? std::optional(2u) : std::nullopt;
        vui.hasDisplayWindow = (mask & 64) != 0;
        vui.hasTiming = (mask & 128) != 0;
        vui.hasPocProportional = (mask & 2) != 0;
        shape.vui = vui;
        EXPECT_EQ(LastNumberOf(shape), kLastNumber) << mask;
    }
}

TEST(HevcSpsTest, AnAbsentRestrictionPartLeavesZero) {
    HevcSpsShape shape;
    EXPECT_EQ(LastNumberOf(shape), 0u);
    shape.vui = Vui();
    EXPECT_EQ(LastNumberOf(shape), 0u);
}

TEST(HevcSpsTest, ReadsFixedPictureRatesFromHrdParametersOfEveryShape) {
    for (unsigned mask = 0; mask < 8; ++mask) {
        Hrd hrd{(mask & 1) != 0, (mask & 2) != 0, (mask & 4) != 0, {}};
        hrd.subLayers = {{true, true, false, 0},
                         {false, true, false, 31},
                         {false, false, true, 0},
                         {false, false, false, 3},
                         {true, true, false, 2}};
        HevcSpsShape shape = ShapeWithLastNumber();
        shape.maxSubLayersMinus1 = 4;
        shape.vui->hasTiming = true;
        shape.vui->hrd = hrd;
        const HevcSps sps = ParseHevcSps(WriteHevcSps(shape));
        const std::array<bool, codecs::kHevcMaxSubLayers> expected{true, false, false, false,
                                                                   true, false, false, false};
        EXPECT_EQ(sps.fixedPicRateGeneral, expected) << mask;
        EXPECT_EQ(sps.minSpatialSegmentationIdc, kLastNumber) << mask;
    }
}

TEST(HevcSpsTest, TakesOutEmulationPreventionBytes) {
    HevcSpsShape shape = ShapeWithLastNumber();
    shape.compatibilityFlags = 0;
    shape.constraintFlags = 0x000001000003ULL;
    const Bytes unit = WriteHevcSps(shape);
    const Bytes emulation{0, 0, 3};
    ASSERT_NE(std::search(unit.begin(), unit.end(), emulation.begin(), emulation.end()), unit.end());
    const HevcSps sps = ParseHevcSps(unit);
    EXPECT_EQ(sps.generalConstraintFlags, 0x000001000003ULL);
    EXPECT_EQ(sps.generalLevelIdc, 93);
    EXPECT_EQ(sps.minSpatialSegmentationIdc, kLastNumber);
}

} // namespace

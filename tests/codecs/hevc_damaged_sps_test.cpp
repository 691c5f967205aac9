// H.265 sequence parameter sets that are cut off, out of range or random: what was read stays, the rest is 0, and
// nothing is read outside the buffer.
#include <gtest/gtest.h>

#include <random>

#include "codecs/hevc_sps.h"
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

// The last number that is read, so it is there only when all in front of it was.
constexpr uint32_t kLastNumber = 1234;

HevcSpsShape ShapeWithLastNumber() {
    HevcSpsShape shape;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = kLastNumber;
    return shape;
}

HevcSpsShape FullShape() {
    HevcSpsShape shape = ShapeWithLastNumber();
    shape.maxSubLayersMinus1 = 2;
    shape.subLayers = {{true, true}, {false, true}};
    shape.chromaFormatIdc = 2;
    shape.bitDepthLumaMinus8 = 2;
    shape.bitDepthChromaMinus8 = 4;
    shape.hasConformanceWindow = true;
    shape.scalingLists = ScalingLists::Coded;
    shape.hasPcm = true;
    ShortTermSet predicted;
    predicted.isPredicted = true;
    predicted.flags = {"1", "1", "1"};
    shape.shortTermSets = {{{0}, {0}}, predicted};
    shape.longTermPictures = 3;
    shape.vui->aspectRatioIdc = uint8_t{255};
    shape.vui->hasTiming = true;
    shape.vui->hrd = Hrd{true, true, true, {{true, true, false, 0}, {true, true, false, 1}, {true, true, false, 0}}};
    return shape;
}

// Each field is either the whole parameter set's or 0.
void ExpectReadOrZero(const HevcSps& cut, const HevcSps& whole, size_t bits) {
    const auto readOrZero = [](auto value, auto wholeValue) { return value == wholeValue || value == 0; };
    EXPECT_TRUE(readOrZero(cut.generalProfileSpace, whole.generalProfileSpace)) << bits;
    EXPECT_TRUE(readOrZero(cut.generalTierFlag, whole.generalTierFlag)) << bits;
    EXPECT_TRUE(readOrZero(cut.generalProfileIdc, whole.generalProfileIdc)) << bits;
    EXPECT_TRUE(readOrZero(cut.generalProfileCompatibilityFlags, whole.generalProfileCompatibilityFlags)) << bits;
    EXPECT_TRUE(readOrZero(cut.generalLevelIdc, whole.generalLevelIdc)) << bits;
    EXPECT_TRUE(readOrZero(cut.chromaFormatIdc, whole.chromaFormatIdc)) << bits;
    EXPECT_TRUE(readOrZero(cut.bitDepthLumaMinus8, whole.bitDepthLumaMinus8)) << bits;
    EXPECT_TRUE(readOrZero(cut.bitDepthChromaMinus8, whole.bitDepthChromaMinus8)) << bits;
    EXPECT_TRUE(readOrZero(cut.maxSubLayersMinus1, whole.maxSubLayersMinus1)) << bits;
    EXPECT_TRUE(readOrZero(cut.minSpatialSegmentationIdc, whole.minSpatialSegmentationIdc)) << bits;
    for (size_t layer = 0; layer < cut.fixedPicRateGeneral.size(); ++layer) {
        EXPECT_TRUE(readOrZero(cut.fixedPicRateGeneral[layer], whole.fixedPicRateGeneral[layer])) << bits;
    }
}

TEST(HevcDamagedSpsTest, CutAtEveryByteKeepsWhatWasReadAndZeroes) {
    const Bytes unit = WriteHevcSps(FullShape());
    const HevcSps whole = ParseHevcSps(unit);
    ASSERT_EQ(whole.minSpatialSegmentationIdc, kLastNumber);
    for (size_t size = 0; size < unit.size(); ++size) {
        const Bytes cut(unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size));
        const HevcSps sps = ParseHevcSps(cut);
        ExpectReadOrZero(sps, whole, size * 8);
        EXPECT_EQ(sps.generalLevelIdc, size >= 18 ? whole.generalLevelIdc : 0) << size;
    }
    EXPECT_EQ(ParseHevcSps({}).generalProfileIdc, 0);
}

// A set that ends within a byte: the bits behind the end are zeros, as in a buffer that was cleared.
TEST(HevcDamagedSpsTest, CutAtEveryBitAndFilledUpWithZerosStaysWithinItsBuffer) {
    const mkv_test::BitWriter bits = mkv_test::WriteHevcSpsBits(FullShape());
    for (size_t size = 0; size < bits.Size(); ++size) {
        const HevcSps sps = ParseHevcSps(mkv_test::WrapHevcSps(bits.BytesOf(size)));
        EXPECT_EQ(sps.maxSubLayersMinus1, size >= 7 ? 2 : sps.maxSubLayersMinus1) << size;
    }
}

TEST(HevcDamagedSpsTest, ASetThatEndsInTheMiddleOfAnExpGolombNumberHasZeroThere) {
    HevcSpsShape shape;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 4095; // 25 bits
    const Bytes unit = WriteHevcSps(shape);
    const Bytes cut(unit.begin(), unit.end() - 4);
    const HevcSps sps = ParseHevcSps(cut);
    EXPECT_EQ(sps.minSpatialSegmentationIdc, 0u);
    EXPECT_EQ(sps.chromaFormatIdc, 1u);
    EXPECT_EQ(sps.generalLevelIdc, 93);
}

TEST(HevcDamagedSpsTest, CountsOutOfRangeEndTheParseAndKeepWhatWasRead) {
    HevcSpsShape tooManySets = ShapeWithLastNumber();
    tooManySets.shortTermSets.assign(65, ShortTermSet{{}, {}});
    HevcSpsShape tooManyPictures = ShapeWithLastNumber();
    tooManyPictures.shortTermSets = {{std::vector<uint32_t>(17, 0), {}}};
    HevcSpsShape tooManyLongTerm = ShapeWithLastNumber();
    tooManyLongTerm.longTermPictures = 33;
    HevcSpsShape tooWide = ShapeWithLastNumber();
    tooWide.log2MaxPocLsbMinus4 = 13;
    HevcSpsShape tooManyBuffers = ShapeWithLastNumber();
    tooManyBuffers.vui->hasTiming = true;
    tooManyBuffers.vui->hrd = Hrd{true, false, false, {{true, true, false, 32}}};
    for (const HevcSpsShape& shape : {tooManySets, tooManyPictures, tooManyLongTerm, tooWide, tooManyBuffers}) {
        const HevcSps sps = ParseHevcSps(WriteHevcSps(shape));
        EXPECT_EQ(sps.generalLevelIdc, 93);
        EXPECT_EQ(sps.minSpatialSegmentationIdc, 0u);
    }
}

TEST(HevcDamagedSpsTest, AHeadIsThereAsAWholeOrNotAtAll) {
    const Bytes unit = WriteHevcSps(FullShape());
    ASSERT_TRUE(ParseHevcSpsHead(unit).has_value());
    size_t smallest = 0;
    for (size_t size = 0; size <= unit.size(); ++size) {
        const Bytes cut(unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size));
        const auto head = ParseHevcSpsHead(cut);
        smallest = smallest == 0 && head ? size : smallest;
        EXPECT_EQ(head.has_value(), smallest != 0) << size;
        EXPECT_EQ(head ? head->Shape().width : 304u, 304u) << size;
    }
    EXPECT_GT(smallest, 18u); // the general profile, tier and level alone
}

TEST(HevcDamagedSpsTest, NumbersOutOfRangeAreKeptButMakeNoHead) {
    HevcSpsShape unknownChroma;
    unknownChroma.chromaFormatIdc = 4;
    const Bytes unit = WriteHevcSps(unknownChroma);
    EXPECT_EQ(ParseHevcSps(unit).chromaFormatIdc, 4u);
    EXPECT_EQ(ParseHevcSps(unit).bitDepthLumaMinus8, unknownChroma.bitDepthLumaMinus8);
    EXPECT_FALSE(ParseHevcSpsHead(unit).has_value());
    HevcSpsShape tooWide;
    tooWide.log2MaxPocLsbMinus4 = 13;
    EXPECT_FALSE(ParseHevcSpsHead(WriteHevcSps(tooWide)).has_value());
}

TEST(HevcDamagedSpsTest, HugeCountsEndAtOnce) {
    mkv_test::BitWriter bits = mkv_test::WriteHevcSpsBits(HevcSpsShape());
    for (int fill = 0; fill < 256; fill += 255) {
        for (size_t size = 0; size < bits.Size(); ++size) {
            Bytes payload = bits.BytesOf(size);
            payload.insert(payload.end(), 2000, static_cast<uint8_t>(fill));
            const HevcSps sps = ParseHevcSps(mkv_test::WrapHevcSps(payload));
            EXPECT_LT(sps.maxSubLayersMinus1, 8);
        }
    }
}

TEST(HevcDamagedSpsTest, RandomBytesStayWithinTheirBuffer) {
    std::mt19937 random(20240602);
    const Bytes whole = WriteHevcSps(FullShape());
    for (int round = 0; round < 4000; ++round) {
        Bytes unit = whole;
        for (size_t changes = 1 + random() % 8; changes > 0; --changes) {
            unit[2 + random() % (unit.size() - 2)] = static_cast<uint8_t>(random());
        }
        unit.resize(random() % (unit.size() + 1));
        unit.shrink_to_fit();
        EXPECT_LT(ParseHevcSps(unit).maxSubLayersMinus1, 8);
    }
}

} // namespace

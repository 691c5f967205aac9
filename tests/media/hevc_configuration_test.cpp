#include "codecs/hevc_configuration.h"

#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/codecs/hevc_sps_writer.h"
#include "tests/media/encoder_parameter_sets.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::HevcSpsShape;
using mkv_test::Hrd;
using mkv_test::ToHex;
using mkv_test::Vui;
using mkv_test::WriteHevcSps;

constexpr size_t kHeadSize = 23;

// The byte stream's record through the media type, as the writer asks for it.
Bytes RecordOf(const GUID& subtype, const Bytes& sequenceHeader) {
    const auto described = media::DescribeCodec(test_support::Mpeg2VideoType(subtype, {}, sequenceHeader).Get());
    EXPECT_EQ(described.codecId, "V_MPEGH/ISO/HEVC");
    return described.codecPrivate.value_or(Bytes());
}

Bytes ByteStreamRecord(const std::vector<Bytes>& units) {
    return RecordOf(mediasubtype::kHevcAnnexB, ByteStream(units));
}

std::string HeadOf(const HevcSpsShape& shape) {
    return ToHex(ByteStreamRecord({WriteHevcSps(shape)})).substr(0, 2 * kHeadSize);
}

BYTE Byte21(const HevcSpsShape& shape) {
    return ByteStreamRecord({WriteHevcSps(shape)}).at(21);
}

HevcSpsShape WithRates(const std::vector<bool>& fixedRates) {
    Hrd hrd{true, false, false, {}};
    for (const bool isFixed : fixedRates) {
        hrd.subLayers.push_back({isFixed, true, false, 0});
    }
    HevcSpsShape shape;
    shape.maxSubLayersMinus1 = static_cast<unsigned>(fixedRates.size() - 1);
    shape.vui = Vui();
    shape.vui->hasTiming = true;
    shape.vui->hrd = hrd;
    return shape;
}

TEST(HevcConfigurationTest, WithoutHrdParametersByte21IsHex0FAndWithAFixedPictureRateHex8F) {
    HevcSpsShape without;
    without.vui = Vui();
    without.vui->hasTiming = true;
    EXPECT_EQ(Byte21(without), 0x0f);
    EXPECT_EQ(Byte21(WithRates({true})), 0x8f);
}

TEST(HevcConfigurationTest, TheConstantFrameRateCountsTheSubLayersWithAFixedRate) {
    EXPECT_EQ(Byte21(WithRates({false})) >> 6, 0);
    EXPECT_EQ(Byte21(WithRates({true, true, true})) >> 6, 2);
    EXPECT_EQ(Byte21(WithRates({false, true, false})) >> 6, 1);
    EXPECT_EQ(Byte21(WithRates({true, false})) >> 6, 1);
    EXPECT_EQ(Byte21(WithRates({false, false, false, false})) >> 6, 0);
}

TEST(HevcConfigurationTest, Byte21CarriesTheTemporalLayersNestingAndLengthSize) {
    HevcSpsShape shape;
    shape.temporalIdNesting = false;
    for (unsigned layers = 0; layers <= 6; ++layers) {
        shape.maxSubLayersMinus1 = layers;
        EXPECT_EQ(Byte21(shape), (layers + 1) << 3 | 3);
    }
    shape.temporalIdNesting = true;
    EXPECT_EQ(Byte21(shape), 0x3f);
}

TEST(HevcConfigurationTest, TheHeadTakesItsFieldsFromTheSps) {
    HevcSpsShape shape;
    shape.profileSpace = 1;
    shape.tier = true;
    shape.profileIdc = 4;
    shape.compatibilityFlags = 0x08123456;
    shape.constraintFlags = 0xffffffffffffULL;
    shape.level = 120;
    shape.chromaFormatIdc = 2;
    shape.bitDepthLumaMinus8 = 2;
    shape.bitDepthChromaMinus8 = 4;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 0x123;
    // Only fourteen constraint flags are kept; the version is 0.
    EXPECT_EQ(HeadOf(shape), "00"
                             "64"
                             "08123456"
                             "fffc"
                             "00000000"
                             "78"
                             "f123"
                             "fc"
                             "fe"
                             "fa"
                             "fc"
                             "0000"
                             "0f"
                             "01");
}

TEST(HevcConfigurationTest, TheLargestSpatialSegmentationFillsItsTwelveBits) {
    HevcSpsShape shape;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 4095;
    EXPECT_EQ(HeadOf(shape).substr(26, 4), "ffff");
}

TEST(HevcConfigurationTest, ValuesTooLargeForTheirFieldLeaveTheFieldsAroundAlone) {
    HevcSpsShape shape;
    shape.chromaFormatIdc = 1000;
    shape.bitDepthLumaMinus8 = 1000;
    shape.bitDepthChromaMinus8 = 7 + 8;
    shape.maxSubLayersMinus1 = 7; // the standard ends at 6
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 0x31234;
    const Bytes record = ByteStreamRecord({WriteHevcSps(shape)});
    EXPECT_EQ(record.at(13), 0xf2);
    EXPECT_EQ(record.at(14), 0x34);
    EXPECT_EQ(record.at(16), 0xfc);
    EXPECT_EQ(record.at(17), 0xf8);
    EXPECT_EQ(record.at(18), 0xff);
    EXPECT_EQ(record.at(21), 0x07); // an unknown number of layers
}

TEST(HevcConfigurationTest, EveryUnitBecomesAnArrayOfItsOwnInOrderAndWhateverItsType) {
    const Bytes vps = FromHex("4001 0c");
    const Bytes pps = FromHex("4401 c1");
    const Bytes sei = FromHex("4e01 05");
    const Bytes slice = FromHex("2601 af");
    const Bytes sps = WriteHevcSps({});
    const Bytes record = ByteStreamRecord({vps, sei, sps, pps, pps, slice});
    EXPECT_EQ(record.at(22), 6);
    const std::string spsSize = ToHex(Bytes{static_cast<BYTE>(sps.size())});
    EXPECT_EQ(ToHex(record).substr(2 * kHeadSize), "a0"
                                                   "0001"
                                                   "0003"
                                                   "40010c"
                                                   "a7"
                                                   "0001"
                                                   "0003"
                                                   "4e0105"
                                                   "a1"
                                                   "0001"
                                                   "00" +
                                                       spsSize + ToHex(sps) +
                                                       "a2"
                                                       "0001"
                                                       "0003"
                                                       "4401c1"
                                                       "a2"
                                                       "0001"
                                                       "0003"
                                                       "4401c1"
                                                       "93"
                                                       "0001"
                                                       "0003"
                                                       "2601af");
}

TEST(HevcConfigurationTest, TheFirstSpsCounts) {
    HevcSpsShape first;
    first.level = 90;
    HevcSpsShape second;
    second.level = 120;
    EXPECT_EQ(ByteStreamRecord({FromHex("4001"), WriteHevcSps(first), WriteHevcSps(second)}).at(12), 90);
}

TEST(HevcConfigurationTest, WithoutSpsTheRecordIsBuiltFromZeros) {
    EXPECT_EQ(ToHex(ByteStreamRecord({FromHex("40010c")})), "00"
                                                            "00"
                                                            "00000000"
                                                            "0000"
                                                            "00000000"
                                                            "00"
                                                            "f000"
                                                            "fc"
                                                            "fc"
                                                            "f8"
                                                            "f8"
                                                            "0000"
                                                            "0b"
                                                            "01"
                                                            "a0"
                                                            "0001"
                                                            "0003"
                                                            "40010c");
    EXPECT_EQ(ByteStreamRecord({}).size(), kHeadSize);
}

TEST(HevcConfigurationTest, AnEmptyUnitMakesNoArray) {
    EXPECT_EQ(ByteStreamRecord({{}, FromHex("4001"), {}}).at(22), 1);
}

TEST(HevcConfigurationTest, StoredUnitsKeepTheirEmulationPreventionBytes) {
    const Bytes sps = FromHex(mkv_test::kHevcEncoderCases[0].sps);
    const Bytes record = ByteStreamRecord({sps});
    EXPECT_EQ(Bytes(record.begin() + kHeadSize + 5, record.end()), sps);
}

TEST(HevcConfigurationTest, AThreeByteStartCodeIsNoBoundary) {
    const Bytes record = RecordOf(mediasubtype::kHevcAnnexB, FromHex("00000001 40010c 000001 4401c1"));
    EXPECT_EQ(record.at(22), 1);
    EXPECT_EQ(ToHex(record).substr(2 * kHeadSize), "a0"
                                                   "0001"
                                                   "0009"
                                                   "40010c0000014401c1");
}

TEST(HevcConfigurationTest, LengthPrefixedStreamsKeepTheirRecordAsItStands) {
    const Bytes record = FromHex("0101600000009000000000001ef000fcfdf8f800000f03a00001");
    EXPECT_EQ(RecordOf(mediasubtype::kHvc1, record), record);
    EXPECT_EQ(RecordOf(mediasubtype::kHvc1, FromHex("ff")), FromHex("ff"));
}

TEST(HevcConfigurationTest, ARecordLargerThanTheReservedSizeGrows) {
    const Bytes unit = Concat({FromHex("4e01"), Bytes(60000, 0x55)});
    EXPECT_EQ(ByteStreamRecord({unit, unit}).size(), kHeadSize + 2 * (5 + unit.size()));
}

TEST(HevcConfigurationTest, UnitsThatTheRecordCannotCountAreLeftOut) {
    const Bytes tooLong = Concat({FromHex("4e01"), Bytes(65536, 0x55)});
    EXPECT_EQ(ToHex(ByteStreamRecord({tooLong, FromHex("4001")})).substr(2 * kHeadSize - 2), "01"
                                                                                             "a0"
                                                                                             "0001"
                                                                                             "0002"
                                                                                             "4001");

    const Bytes record = ByteStreamRecord(std::vector<Bytes>(300, FromHex("4e01")));
    EXPECT_EQ(record.at(22), 255);
    EXPECT_EQ(record.size(), kHeadSize + 255 * 7);
}

TEST(HevcConfigurationTest, ParameterSetsOfARealEncoderGiveTheFieldsThatOtherToolsRead) {
    for (const mkv_test::HevcEncoderCase& encoder : mkv_test::kHevcEncoderCases) {
        const Bytes vps = FromHex(encoder.vps);
        const Bytes sps = FromHex(encoder.sps);
        const Bytes pps = FromHex(encoder.pps);
        const Bytes record = ByteStreamRecord({vps, sps, pps});
        EXPECT_EQ(ToHex(Bytes(record.begin(), record.begin() + kHeadSize)), ToHex(FromHex(encoder.recordHead)))
            << encoder.name;
        EXPECT_EQ(record.size(), kHeadSize + 15 + vps.size() + sps.size() + pps.size());
    }
}

} // namespace

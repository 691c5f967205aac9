#include "codecs/whole_hevc_configuration.h"

#include <gtest/gtest.h>

#include "codecs/hevc_configuration.h"
#include "tests/codecs/bit_writer.h"
#include "tests/codecs/hevc_sps_writer.h"
#include "tests/support/hex_bytes.h"

namespace {

using codecs::SequenceFacts;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::HevcSpsShape;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;
using mkv_test::Vui;
using mkv_test::WriteHevcSps;

constexpr size_t kHeadBytes = 23;

// By libx265: range extensions, 4:4:4, 10 bits. The record is the one that ffmpeg writes.
const Bytes kVps = FromHex("40010c01ffff0408000003009c0800000300001e959809");
const Bytes kSps = FromHex("4201010408000003009c0800000300001e900410626cb2b35c995e02d0100000030010000003019080");
const Bytes kPps = FromHex("4401c17318310890");
constexpr const char* kRecord = "0104080000009c08000000001ef000fcfffafa00000f03"
                                "200001001740010c01ffff0408000003009c0800000300001e959809"
                                "21000100294201010408000003009c0800000300001e900410626cb2b35c995e02d0100000030010000003"
                                "019080"
                                "22000100084401c17318310890";
const Bytes kUserData = FromHex("4e01 05 02 aabb 80");
const Bytes kPictureTiming = FromHex("4e01 01 01 aa 80");

std::string RecordOf(const Bytes& header, const SequenceFacts& facts = {}) {
    const auto record = codecs::BuildWholeHevcConfiguration(header, facts);
    return record ? ToHex(*record) : "none";
}

std::string HeadOf(const HevcSpsShape& shape) {
    return RecordOf(ByteStream({WriteHevcSps(shape)})).substr(0, 2 * kHeadBytes);
}

// With what the slices of a picture parameter set promise.
Bytes WritePps(bool hasTiles, bool hasWavefronts, uint8_t id = 0) {
    mkv_test::BitWriter bits;
    bits.UE(id);
    bits.UE(0);
    bits.Bits(0, 7);
    bits.UE(0);
    bits.UE(0);
    bits.UE(0);      // signed numbers: 0, -2, 2
    bits.Bits(1, 3); // with a depth of quantisers
    bits.UE(1);
    bits.UE(4);
    bits.UE(3);
    bits.Bits(0, 4);
    bits.Bits(hasTiles ? 1 : 0, 1);
    bits.Bits(hasWavefronts ? 1 : 0, 1);
    bits.Bits(1, 1);
    return Concat({FromHex("4401"), bits.Bytes()});
}

uint8_t ParallelismOf(const std::vector<Bytes>& ppsUnits, uint32_t spatialSegmentation = 1) {
    HevcSpsShape shape;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = spatialSegmentation;
    std::vector<Bytes> units{WriteHevcSps(shape)};
    units.insert(units.end(), ppsUnits.begin(), ppsUnits.end());
    return codecs::BuildWholeHevcConfiguration(ByteStream(units), {})->at(15);
}

TEST(WholeHevcConfigurationTest, AllIsTakenFromTheSpsAndTheVersionIsOne) {
    EXPECT_EQ(RecordOf(ByteStream({kVps, kSps, kPps})), kRecord);
    EXPECT_EQ(RecordOf(LengthPrefixed({kVps, kSps, kPps})), kRecord);
}

TEST(WholeHevcConfigurationTest, EveryConstraintFlagIsKept) {
    HevcSpsShape shape;
    shape.profileSpace = 1;
    shape.tier = true;
    shape.profileIdc = 4;
    shape.compatibilityFlags = 0x08123456;
    shape.constraintFlags = 0xfedcba987654ULL;
    shape.level = 120;
    shape.chromaFormatIdc = 2;
    shape.bitDepthLumaMinus8 = 2;
    shape.bitDepthChromaMinus8 = 4;
    shape.temporalIdNesting = false;
    shape.maxSubLayersMinus1 = 2;
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 0x123;
    EXPECT_EQ(HeadOf(shape), "01"
                             "64"
                             "08123456"
                             "fedcba987654"
                             "78"
                             "f123"
                             "fc"
                             "fe"
                             "fa"
                             "fc"
                             "0000"
                             "1b"
                             "01");
}

TEST(WholeHevcConfigurationTest, UnitsOfATypeShareAnArrayInTheOrderOfTheStandard) {
    const Bytes pps2 = FromHex("4401 ff");
    const std::string record = RecordOf(ByteStream({kUserData, kPps, kSps, pps2, kVps, kPps}));
    EXPECT_EQ(record.substr(44, 2), "04");
    const std::string arrays = record.substr(2 * kHeadBytes);
    EXPECT_EQ(arrays.find("200001"
                          "0017" +
                          ToHex(kVps)),
              0u);
    EXPECT_NE(arrays.find("210001"
                          "0029" +
                          ToHex(kSps)),
              std::string::npos);
    EXPECT_NE(arrays.find("220002"
                          "0008" +
                          ToHex(kPps) + "0003" + ToHex(pps2) +
                          "270001"
                          "0007" +
                          ToHex(kUserData)),
              std::string::npos);
}

TEST(WholeHevcConfigurationTest, MessagesAboutPicturesAndUnitsOfOtherLayersAreLeftOut) {
    const Bytes otherLayer = FromHex("4409 c173");
    const Bytes suffix = FromHex("5001 84 01 aa 80");
    const Bytes mixed = FromHex("4e01 05 01 aa 01 01 bb 80");
    const Bytes cut = FromHex("4e01 05 20 aa 80");
    const Bytes empty = FromHex("4e01");
    const Bytes slice = FromHex("2601 af");
    const Bytes headless = FromHex("44");
    EXPECT_EQ(RecordOf(ByteStream(
                  {kVps, kSps, kPps, kPictureTiming, otherLayer, suffix, mixed, cut, empty, slice, headless})),
              kRecord);
}

TEST(WholeHevcConfigurationTest, SeveralDeclarativeMessagesOfOneUnitAreKept) {
    const Bytes both = FromHex("4e01 89 01 aa 90 01 bb 80");
    const Bytes twoDeclared = FromHex("4e01 89 01 aa 05 01 bb 80");
    EXPECT_EQ(RecordOf(ByteStream({kVps, kSps, kPps, both})).substr(std::string(kRecord).size()), "27"
                                                                                                  "0001"
                                                                                                  "0009" +
                                                                                                      ToHex(both));
    EXPECT_EQ(RecordOf(ByteStream({kVps, kSps, kPps, twoDeclared})).substr(std::string(kRecord).size()),
              "27"
              "0001"
              "0009" +
                  ToHex(twoDeclared));
}

TEST(WholeHevcConfigurationTest, ParallelismIsWhatThePicturesShare) {
    EXPECT_EQ(ParallelismOf({WritePps(false, false)}), 0xfc | 1);
    EXPECT_EQ(ParallelismOf({WritePps(true, false)}), 0xfc | 2);
    EXPECT_EQ(ParallelismOf({WritePps(false, true)}), 0xfc | 3);
    EXPECT_EQ(ParallelismOf({WritePps(true, true)}), 0xfc);
    EXPECT_EQ(ParallelismOf({WritePps(true, false), WritePps(true, false, 1)}), 0xfc | 2);
    EXPECT_EQ(ParallelismOf({WritePps(true, false), WritePps(false, true, 1)}), 0xfc);
    EXPECT_EQ(ParallelismOf({}), 0xfc);
    EXPECT_EQ(ParallelismOf({FromHex("4401 c1")}), 0xfc); // cut
    EXPECT_EQ(ParallelismOf({WritePps(true, false)}, 0), 0xfc);
}

TEST(WholeHevcConfigurationTest, NumbersThatNoFieldHoldsAreZero) {
    HevcSpsShape shape;
    shape.chromaFormatIdc = 1000;
    shape.bitDepthLumaMinus8 = 8;
    shape.bitDepthChromaMinus8 = 7;
    shape.maxSubLayersMinus1 = 7; // the standard ends at 6
    shape.vui = Vui();
    shape.vui->minSpatialSegmentationIdc = 4096;
    EXPECT_EQ(HeadOf(shape).substr(26), "f000fcfcf8ff00003f01");
    shape.vui->minSpatialSegmentationIdc = 4095;
    EXPECT_EQ(HeadOf(shape).substr(26, 4), "ffff");
}

TEST(WholeHevcConfigurationTest, WithoutAnSpsTheMediaTypeTellsTheProfile) {
    EXPECT_EQ(RecordOf({}, {2, 93, 4}), "0102"
                                        "00000000"
                                        "000000000000"
                                        "5d"
                                        "f000fcfdf8f80000"
                                        "0b"
                                        "00");
}

TEST(WholeHevcConfigurationTest, AnSpsThatIsCutAtAnyByteGivesWhatIsThere) {
    for (size_t size = 0; size < kSps.size(); ++size) {
        const Bytes cut(kSps.begin(), kSps.begin() + static_cast<std::ptrdiff_t>(size));
        const auto record = codecs::BuildWholeHevcConfiguration(LengthPrefixed({kVps, cut, kPps}), {});
        ASSERT_TRUE(record.has_value()) << size;
        EXPECT_EQ(record->at(0), 1) << size;
        // A length of 0 ends the units, and a single byte is none.
        const size_t arrays = size == 0 ? 1 : size == 1 ? 2 : 3;
        EXPECT_EQ(record->at(22), arrays) << size;
    }
}

TEST(WholeHevcConfigurationTest, LengthsThatContradictTheBytesMakeNoRecord) {
    EXPECT_EQ(RecordOf(FromHex("ffff 40")), "none");
    EXPECT_EQ(RecordOf(Concat({LengthPrefixed({kVps}), FromHex("00ff 4201")})), "none");
}

TEST(WholeHevcConfigurationTest, ASoundRecordStaysAsItIs) {
    Bytes record = FromHex(kRecord);
    record[12] = 0x77;  // whatever it says
    record[21] = 0x4d;  // lengths of two bytes, too
    record[23] |= 0x80; // arrays that are complete
    EXPECT_EQ(RecordOf(record), ToHex(record));
    EXPECT_EQ(RecordOf(FromHex("0101600000009000000000001ef000fcfdf8f800000f00")),
              "0101600000009000000000001ef000fcfdf8f800000f00");
}

TEST(WholeHevcConfigurationTest, ARecordThatIsNotSoundIsBuiltAgain) {
    // Version 0, fourteen constraint flags, and an array for each unit.
    EXPECT_EQ(RecordOf(codecs::BuildHevcConfiguration(ByteStream({kVps, kSps, kPps}))), kRecord);
    for (const size_t reserved : {13u, 15u, 16u, 17u, 18u}) {
        Bytes record = FromHex(kRecord);
        record[reserved] &= 0x07;
        EXPECT_EQ(RecordOf(record), kRecord) << reserved;
    }
    Bytes shortLengths = FromHex(kRecord);
    shortLengths[0] = 0;
    shortLengths[21] = 0x0d;
    EXPECT_EQ(RecordOf(shortLengths).substr(42, 2), "0d");
}

TEST(WholeHevcConfigurationTest, ARecordThatIsCutOrGoesOnIsNone) {
    const Bytes whole = FromHex(kRecord);
    for (size_t size = 2; size < whole.size(); ++size) {
        EXPECT_EQ(RecordOf(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))), "none") << size;
    }
    EXPECT_EQ(RecordOf(Concat({whole, {0}})), "none");
}

TEST(WholeHevcConfigurationTest, AnArrayThatHoldsAnotherTypeMakesNoRecord) {
    Bytes record = FromHex(kRecord);
    record[23] = 0x22;
    EXPECT_EQ(RecordOf(record), "none");
}

} // namespace

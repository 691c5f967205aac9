#include "codecs/annexb_converter.h"

#include <gtest/gtest.h>

#include <random>

#include "codecs/nal_unit.h"
#include "tests/support/hex_bytes.h"

namespace {

using codecs::ConvertAnnexB;
using codecs::NALUnit;
using codecs::NALUnitScanner;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::ToHex;

std::string Convert(const char* hex, size_t lengthSize = 4) {
    return ToHex(ConvertAnnexB(FromHex(hex), 4, lengthSize));
}

TEST(AnnexBConverterTest, EachStartCodeBecomesAFourByteLength) {
    EXPECT_EQ(Convert("00000001 0910 00000001 6764000b 00000001 68"), "00000002"
                                                                      "0910"
                                                                      "00000004"
                                                                      "6764000b"
                                                                      "00000001"
                                                                      "68");
}

TEST(AnnexBConverterTest, EachStartCodeBecomesATwoByteLengthForSequenceHeaders) {
    EXPECT_EQ(Convert("00000001 6764000b 00000001 68eb", 2), "0004"
                                                             "6764000b"
                                                             "0002"
                                                             "68eb");
}

TEST(AnnexBConverterTest, ASampleWithThreeByteStartCodesOnlyIsOneUnit) {
    EXPECT_EQ(Convert("000001 0910 000001 65888484"), "0000000c"
                                                      "0000010910"
                                                      "00000165888484");
}

TEST(AnnexBConverterTest, AThreeByteStartCodeStaysInsideItsUnit) {
    EXPECT_EQ(Convert("00000001 0910 000001 6588 00000001 41"), "00000007"
                                                                "0910"
                                                                "0000016588"
                                                                "00000001"
                                                                "41");
}

TEST(AnnexBConverterTest, ABufferWithoutStartCodeIsOneUnit) {
    EXPECT_EQ(Convert("6588"), "00000002"
                               "6588");
    EXPECT_EQ(Convert("000000"), "00000003"
                                 "000000");
}

TEST(AnnexBConverterTest, BytesBeforeTheFirstStartCodeAreAUnit) {
    EXPECT_EQ(Convert("0910 00000001 6588"), "00000002"
                                             "0910"
                                             "00000002"
                                             "6588");
    EXPECT_EQ(Convert("000001 09 00000001 65"), "00000004"
                                                "00000109"
                                                "00000001"
                                                "65");
}

TEST(AnnexBConverterTest, LeadingZeroBytesAreNoUnit) {
    EXPECT_EQ(Convert("00 00000001 6588"), "00000002"
                                           "6588");
    EXPECT_EQ(Convert("0000000000 00000001 6588"), "00000002"
                                                   "6588");
}

TEST(AnnexBConverterTest, ZeroBytesBeforeALaterStartCodeStayWithTheUnitInFront) {
    EXPECT_EQ(Convert("00000001 65 00 00000001 41"), "00000002"
                                                     "6500"
                                                     "00000001"
                                                     "41");
}

TEST(AnnexBConverterTest, AdjacentStartCodesMakeNoEmptyUnit) {
    EXPECT_EQ(Convert("00000001 00000001 65 00000001 00000001 00000001 41 00000001"), "00000001"
                                                                                      "65"
                                                                                      "00000001"
                                                                                      "41");
    // In a sequence header a length of 0 would hide everything behind it.
    EXPECT_EQ(Convert("00000001 00000001 67", 2), "0001"
                                                  "67");
}

TEST(AnnexBConverterTest, NothingAndStartCodesAloneGiveNothing) {
    EXPECT_EQ(Convert(""), "");
    EXPECT_EQ(Convert("00000001"), "");
    EXPECT_EQ(Convert("00000001 00000001"), "");
}

TEST(AnnexBConverterTest, ABeginningOfAStartCodeAtTheEndBelongsToTheUnit) {
    EXPECT_EQ(Convert("00000001 65 000000"), "00000004"
                                             "65000000");
    EXPECT_EQ(Convert("00000001 65 00"), "00000002"
                                         "6500");
}

TEST(AnnexBConverterTest, TheStartCodeLengthIsTheCallersChoice) {
    EXPECT_EQ(ToHex(ConvertAnnexB(FromHex("000001 0910 000001 65"), 3, 4)), "00000002"
                                                                            "0910"
                                                                            "00000001"
                                                                            "65");
    // Behind a three-byte code, the fourth byte of the longer one is the unit's last.
    EXPECT_EQ(ToHex(ConvertAnnexB(FromHex("000001 09 00000001 65"), 3, 4)), "00000002"
                                                                            "0900"
                                                                            "00000001"
                                                                            "65");
}

TEST(AnnexBConverterTest, AUnitTooLongForTwoByteLengthsIsLeftOutAndTheOthersStay) {
    const Bytes longest(65535, 0x41);
    const Bytes tooLong(65536, 0x42);
    const Bytes stream = ByteStream({tooLong, longest, {0x43}});
    EXPECT_EQ(ConvertAnnexB(stream, 4, 2), Concat({{0xff, 0xff}, longest, {0, 1, 0x43}}));
    EXPECT_EQ(ConvertAnnexB(stream, 4, 4),
              Concat({{0, 1, 0, 0}, tooLong, {0, 0, 0xff, 0xff}, longest, {0, 0, 0, 1, 0x43}}));
}

TEST(AnnexBConverterTest, LengthsAreBigEndian) {
    const Bytes unit(0x012345, 0x41);
    EXPECT_EQ(ConvertAnnexB(ByteStream({unit}), 4, 4), Concat({{0x00, 0x01, 0x23, 0x45}, unit}));
}

// A plain restatement of the rule, byte by byte, without the search that the scanner uses.
std::vector<Bytes> UnitsByTheRule(const Bytes& stream) {
    std::vector<Bytes> units(1);
    for (size_t i = 0; i < stream.size(); ++i) {
        if (i + 4 <= stream.size() && stream[i] == 0 && stream[i + 1] == 0 && stream[i + 2] == 0 &&
            stream[i + 3] == 1) {
            const bool isLeadingZeros =
                units.size() == 1 && ToHex(units[0]).find_first_not_of('0') == std::string::npos;
            if (isLeadingZeros) {
                units[0].clear();
            }
            units.emplace_back();
            i += 3;
        } else {
            units.back().push_back(stream[i]);
        }
    }
    std::erase_if(units, [](const Bytes& unit) { return unit.empty(); });
    return units;
}

TEST(AnnexBConverterTest, FindsTheSameUnitsAsAPlainReadingInRandomBytes) {
    std::mt19937 random(20240601);
    std::discrete_distribution<int> symbol({60, 25, 15}); // zeros and ones, so that start codes are common
    for (int round = 0; round < 3000; ++round) {
        Bytes stream(random() % 40);
        for (uint8_t& byte : stream) {
            const int kind = symbol(random);
            byte = kind < 2 ? static_cast<uint8_t>(kind) : static_cast<uint8_t>(random());
        }
        NALUnitScanner scanner(stream, 4);
        std::vector<Bytes> found;
        while (const auto unit = scanner.Next()) {
            found.emplace_back(unit->Payload().begin(), unit->Payload().end());
        }
        ASSERT_EQ(found, UnitsByTheRule(stream)) << ToHex(stream);
    }
}

TEST(NALUnitTest, ReadsTheTypeFromTheHeaderByte) {
    const Bytes sps{0x67, 0x64};
    EXPECT_EQ(NALUnit(sps).AvcType(), 7);
    EXPECT_EQ(NALUnit(sps).Length(), 2u);
    EXPECT_EQ(NALUnit(sps).Header(), 0x67);
    const Bytes hevcSps{0x42, 0x01};
    EXPECT_EQ(NALUnit(hevcSps).HevcType(), 33);
    const Bytes extremes{0xff};
    EXPECT_EQ(NALUnit(extremes).AvcType(), 31);
    EXPECT_EQ(NALUnit(extremes).HevcType(), 63);
    EXPECT_EQ(NALUnit({}).Header(), 0);
}

TEST(NALUnitTest, ReadsLayerAndTemporalIdFromAWholeHeader) {
    const Bytes base{0x42, 0x01};
    EXPECT_EQ(NALUnit(base).HevcLayerId(), 0);
    EXPECT_EQ(NALUnit(base).HevcTemporalId(), 0);
    const Bytes upper{0x43, 0x0c}; // 1 00001 100
    EXPECT_EQ(NALUnit(upper).HevcLayerId(), 33);
    EXPECT_EQ(NALUnit(upper).HevcTemporalId(), 3);
    const Bytes cut{0x43};
    EXPECT_EQ(NALUnit(cut).HevcLayerId(), 0);
    EXPECT_EQ(NALUnit(cut).HevcTemporalId(), 0);
}

TEST(NALUnitTest, TheRawPayloadLacksHeaderAndEmulationPrevention) {
    const auto raw = [](const char* hex, size_t headerBytes) {
        return ToHex(codecs::RawPayload(FromHex(hex), headerBytes));
    };
    EXPECT_EQ(raw("67 000003 01", 1), "000001");
    EXPECT_EQ(raw("4201 000003 000003 03", 2), "0000000003");
    EXPECT_EQ(raw("67 0003 000004", 1), "0003000004");
    EXPECT_EQ(raw("67", 2), "");
}

} // namespace

// Start codes are searched many bytes at a time, and replaced in place. Both are compared with a search that looks at
// one byte after the other.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "codecs/annexb_converter.h"
#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"
#include "tests/support/hex_bytes.h"

namespace {

using codecs::ByteView;
using mkv_test::Bytes;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::ToHex;

bool IsStartCode(ByteView bytes) {
    return bytes.back() == 1 && std::all_of(bytes.begin(), bytes.end() - 1, [](uint8_t byte) { return byte == 0; });
}

// The offset of the first start code from there on; the stream's size when there is none.
size_t FindPlainly(ByteView stream, size_t from, size_t length) {
    for (; from + length <= stream.size(); ++from) {
        if (IsStartCode(stream.subspan(from, length))) {
            return from;
        }
    }
    return stream.size();
}

std::vector<Bytes> UnitsPlainly(ByteView stream, size_t length) {
    std::vector<Bytes> units;
    size_t start = FindPlainly(stream, 0, length);
    const ByteView front = stream.first(start);
    const bool isUnit =
        start == stream.size() || std::any_of(front.begin(), front.end(), [](uint8_t b) { return b != 0; });
    for (start = isUnit ? 0 : start + length; start < stream.size();) {
        const size_t end = FindPlainly(stream, start, length);
        if (end > start) {
            units.emplace_back(stream.begin() + static_cast<ptrdiff_t>(start),
                               stream.begin() + static_cast<ptrdiff_t>(end));
        }
        start = end + length;
    }
    return units;
}

std::vector<Bytes> UnitsByTheScanner(ByteView stream, size_t length) {
    codecs::NALUnitScanner scanner(stream, length);
    std::vector<Bytes> units;
    while (const auto unit = scanner.Next()) {
        units.emplace_back(unit->Payload().begin(), unit->Payload().end());
    }
    return units;
}

Bytes ConvertPlainly(ByteView stream) {
    Bytes converted;
    for (const Bytes& unit : UnitsPlainly(stream, codecs::kStartCodeLengthBytes)) {
        codecs::AppendBigEndian(converted, unit.size(), codecs::kSampleLengthSizeBytes);
        converted.insert(converted.end(), unit.begin(), unit.end());
    }
    return converted;
}

// Bytes of which so many in a hundred are zeros and ones.
Bytes RandomStream(std::mt19937& random, size_t size, unsigned percent) {
    Bytes stream(size);
    for (uint8_t& byte : stream) {
        byte = random() % 100 < percent ? static_cast<uint8_t>(random() % 4 == 0) : static_cast<uint8_t>(random());
    }
    return stream;
}

TEST(StartCodeSearchTest, FindsWhatAPlainSearchFindsInRandomStreams) {
    for (unsigned seed = 0; seed < 4000; ++seed) {
        std::mt19937 random(seed);
        const Bytes stream = RandomStream(random, random() % 400, 100 - seed % 60);
        const size_t length = 2 + seed % 5;
        ASSERT_EQ(UnitsByTheScanner(stream, length), UnitsPlainly(stream, length)) << "seed " << seed;
    }
}

TEST(StartCodeSearchTest, FindsAStartCodeAtEveryPlaceOfStreamsOfEveryLength) {
    for (size_t size = 4; size < 180; ++size) {
        for (size_t place = 0; place + 4 <= size; ++place) {
            Bytes stream(size, 0x55);
            std::fill_n(stream.begin() + static_cast<ptrdiff_t>(place), 3, uint8_t{0});
            stream[place + 3] = 1;
            ASSERT_EQ(UnitsByTheScanner(stream, 4), UnitsPlainly(stream, 4)) << place << " of " << size;
        }
    }
}

TEST(StartCodeSearchTest, AlmostAStartCodeIsNone) {
    Bytes stream;
    for (int i = 0; i < 100; ++i) {
        stream = Concat({stream, FromHex("00 ff 00 01 00 00 02 00 00 ff 01"), Bytes(static_cast<size_t>(i) % 7, 0)});
    }
    stream.push_back(0x22);
    EXPECT_EQ(UnitsByTheScanner(stream, 4), UnitsPlainly(stream, 4));
    EXPECT_EQ(UnitsByTheScanner(stream, 3), UnitsPlainly(stream, 3));
}

// ---- In place ------------------------------------------------------------------------------------------------------

std::string Replaced(const char* hex) {
    Bytes stream = FromHex(hex);
    const auto left = codecs::ReplaceStartCodes(stream);
    return left ? ToHex(Bytes(left->begin(), left->end())) : "none";
}

TEST(ReplacedStartCodesTest, EachBecomesALengthWhereItStands) {
    Bytes stream = FromHex("00000001 0910 00000001 6764000b 00000001 68");
    const auto left = codecs::ReplaceStartCodes(stream);
    ASSERT_TRUE(left);
    EXPECT_EQ(left->data(), stream.data());
    EXPECT_EQ(ToHex(stream), "00000002"
                             "0910"
                             "00000004"
                             "6764000b"
                             "00000001"
                             "68");
}

TEST(ReplacedStartCodesTest, WhatIsLeftMovesTogether) {
    EXPECT_EQ(Replaced("0000 00000001 6588"), "00000002"
                                              "6588");
    EXPECT_EQ(Replaced("00000001 00000001 65 00000001 00000001 00000001 4142 00000001"), "00000001"
                                                                                         "65"
                                                                                         "00000002"
                                                                                         "4142");
    EXPECT_EQ(Replaced("00000001"), "");
    EXPECT_EQ(Replaced(""), "");
}

TEST(ReplacedStartCodesTest, AUnitInFrontOfTheFirstHasNoRoomAndNothingChanges) {
    Bytes stream = FromHex("0910 00000001 6588");
    const Bytes before = stream;
    EXPECT_FALSE(codecs::ReplaceStartCodes(stream));
    EXPECT_EQ(stream, before);
    EXPECT_EQ(Replaced("000001 0910 000001 65888484"), "none");
    EXPECT_EQ(Replaced("000000"), "none");
}

TEST(ReplacedStartCodesTest, RandomStreamsBecomeWhatAPlainConversionMakesOfThem) {
    size_t inPlace = 0;
    for (unsigned seed = 0; seed < 4000; ++seed) {
        std::mt19937 random(seed);
        Bytes stream = RandomStream(random, random() % 300, 100 - seed % 60);
        if (seed % 3 != 0) {
            stream = Concat({{0, 0, 0, 1}, stream});
        }
        const Bytes expected = ConvertPlainly(stream);
        ASSERT_EQ(codecs::ConvertAnnexB(stream, 4, 4), expected) << "seed " << seed;
        if (const auto left = codecs::ReplaceStartCodes(stream)) {
            ASSERT_EQ(Bytes(left->begin(), left->end()), expected) << "seed " << seed;
            ++inPlace;
        }
    }
    EXPECT_GT(inPlace, 2000u);
}

} // namespace

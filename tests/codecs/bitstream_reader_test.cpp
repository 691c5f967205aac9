#include "codecs/bitstream_reader.h"

#include <gtest/gtest.h>

#include "tests/codecs/bit_writer.h"

namespace {

using codecs::BitstreamReader;
using mkv_test::BitWriter;
using Bytes = std::vector<uint8_t>;

TEST(BitstreamReaderTest, ReadsBitsMostSignificantFirst) {
    const Bytes bytes{0xa5, 0x3c, 0xff, 0x01, 0x80};
    BitstreamReader reader(bytes);
    EXPECT_TRUE(reader.ReadFlag());
    EXPECT_FALSE(reader.ReadFlag());
    EXPECT_EQ(reader.ReadBits(6), 0x25u);
    EXPECT_EQ(reader.ReadBits(4), 0x3u);
    EXPECT_EQ(reader.ReadBits(12), 0xcffu);
    EXPECT_EQ(reader.ReadBits(0), 0u);
    reader.SkipBits(7);
    EXPECT_EQ(reader.ReadBits(2), 3u);
    EXPECT_TRUE(reader.IsValid());
}

TEST(BitstreamReaderTest, Reads32BitsAtAnyBitPosition) {
    for (unsigned shift = 0; shift < 8; ++shift) {
        const Bytes bytes = BitWriter().Bits(0, shift).Bits(0xdeadbeef, 32).Bytes();
        BitstreamReader reader(bytes);
        reader.SkipBits(shift);
        EXPECT_EQ(reader.ReadBits(32), 0xdeadbeefu) << shift;
    }
}

TEST(BitstreamReaderTest, ReadsExpGolombCodesOfTheStandardsTable) {
    // 1, 010, 011, 00100, 00101, 00110, 00111, 0001000 are 0 to 7.
    const Bytes bytes{0b10100110, 0b01000010, 0b10011000, 0b11100010, 0b00000000};
    BitstreamReader reader(bytes);
    for (uint32_t expected = 0; expected <= 7; ++expected) {
        EXPECT_EQ(reader.ReadUE(), expected);
    }
    EXPECT_TRUE(reader.IsValid());
}

TEST(BitstreamReaderTest, ReadsExpGolombNumbersUpToTheLargest) {
    for (const uint64_t value : {8ULL, 254ULL, 255ULL, 65535ULL, 0x7fffffffULL, 0xfffffffdULL, 0xfffffffeULL}) {
        const Bytes bytes = BitWriter().UE(value).Bytes();
        BitstreamReader reader(bytes);
        EXPECT_EQ(reader.ReadUE(), value);
        EXPECT_TRUE(reader.IsValid()) << value;
    }
}

TEST(BitstreamReaderTest, SignedExpGolombNumbersTakeTurns) {
    const Bytes bytes = BitWriter().UE(0).UE(1).UE(2).UE(3).UE(4).UE(0xfffffffdULL).UE(0xfffffffeULL).Bytes();
    BitstreamReader reader(bytes);
    for (const int32_t expected : {0, 1, -1, 2, -2, 0x7fffffff, -0x7fffffff}) {
        EXPECT_EQ(reader.ReadSE(), expected);
    }
    EXPECT_TRUE(reader.IsValid());
}

TEST(BitstreamReaderTest, RefusesAnExpGolombNumberBeyond32Bits) {
    const Bytes bytes = BitWriter().Bits(0, 32).Bits(1, 1).Bits(~0ULL, 64).Bytes();
    BitstreamReader reader(bytes);
    EXPECT_EQ(reader.ReadUE(), 0u);
    EXPECT_FALSE(reader.IsValid());
}

TEST(BitstreamReaderTest, RefusesAnExpGolombNumberAboveTheLimitAndAcceptsTheLimit) {
    const Bytes bytes = BitWriter().UE(64).UE(65).UE(0).Bits(0xff, 8).Bytes();
    BitstreamReader reader(bytes);
    EXPECT_EQ(reader.ReadUE(64), 64u);
    EXPECT_TRUE(reader.IsValid());
    EXPECT_EQ(reader.ReadUE(64), 0u);
    EXPECT_FALSE(reader.IsValid());
    EXPECT_EQ(reader.ReadBits(8), 0u);
}

TEST(BitstreamReaderTest, AnExpGolombNumberCutAtAnyBitReadsAsZero) {
    for (const uint64_t value : {0ULL, 1ULL, 6ULL, 1000ULL, 0xfffffffeULL}) {
        const BitWriter whole = BitWriter().UE(value);
        // Bits beyond the cut are missing only when the byte ends there, so the number starts at each bit position.
        for (unsigned shift = 0; shift < 8; ++shift) {
            const Bytes bytes = BitWriter().Bits(0, shift).UE(value).Bytes();
            for (size_t size = 0; size * 8 < shift + whole.Size(); ++size) {
                const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
                BitstreamReader reader(cut);
                reader.SkipBits(shift);
                EXPECT_EQ(reader.ReadUE(), 0u) << value << " shifted by " << shift << " cut to " << size;
                EXPECT_FALSE(reader.IsValid());
            }
        }
    }
}

TEST(BitstreamReaderTest, AValueThatDoesNotFitTheBufferReadsAsZeroAndEndsTheReading) {
    const Bytes bytes{0xff};
    BitstreamReader reader(bytes);
    EXPECT_EQ(reader.ReadBits(5), 31u);
    EXPECT_EQ(reader.ReadBits(4), 0u);
    EXPECT_FALSE(reader.IsValid());
    EXPECT_EQ(reader.ReadBits(1), 0u); // three bits are left, but what they mean is lost
}

TEST(BitstreamReaderTest, SkippingBeyondTheEndEndsTheReading) {
    const Bytes bytes{0xff, 0xff};
    BitstreamReader reader(bytes);
    reader.SkipBits(static_cast<size_t>(-1));
    EXPECT_FALSE(reader.IsValid());
    EXPECT_FALSE(reader.ReadFlag());
}

TEST(BitstreamReaderTest, AnEmptyBufferReadsAsZero) {
    BitstreamReader reader({});
    EXPECT_EQ(reader.ReadUE(), 0u);
    EXPECT_FALSE(reader.IsValid());
}

TEST(BitstreamReaderTest, RefusesMoreThan32BitsAtOnce) {
    const Bytes bytes(16, 0xff);
    BitstreamReader reader(bytes);
    EXPECT_EQ(reader.ReadBits(33), 0u);
    EXPECT_FALSE(reader.IsValid());
}

} // namespace

#include "codecs/big_endian.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace {

using codecs::AppendBigEndian;
using codecs::ReadBigEndian;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;

TEST(BigEndianTest, TheFirstByteIsTheMostSignificant) {
    EXPECT_EQ(ReadBigEndian(FromHex("0102")), 0x0102u);
    EXPECT_EQ(ReadBigEndian(FromHex("ff00000000000001")), 0xff00000000000001ULL);
    EXPECT_EQ(ReadBigEndian({}), 0u);
    EXPECT_EQ(ReadBigEndian(FromHex("aa 0102030405060708")), 0x0102030405060708ULL);
}

TEST(BigEndianTest, WhatIsWrittenInSoManyBytesIsReadBack) {
    for (size_t bytes = 0; bytes <= 8; ++bytes) {
        const uint64_t value = bytes == 0 ? 0 : 0x8182838485868788ULL >> 8 * (8 - bytes);
        Bytes output{0x55};
        AppendBigEndian(output, value, bytes);
        ASSERT_EQ(output.size(), 1 + bytes);
        EXPECT_EQ(output[0], 0x55);
        EXPECT_EQ(ReadBigEndian(codecs::ByteView(output).subspan(1)), value) << bytes;
    }
}

TEST(BigEndianTest, ANumberIsCutToItsLastBytes) {
    Bytes output;
    AppendBigEndian(output, 0x01020304, 2);
    EXPECT_EQ(ToHex(output), "0304");
}

} // namespace

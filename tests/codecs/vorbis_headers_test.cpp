#include "codecs/vorbis_headers.h"

#include <gtest/gtest.h>

#include "tests/support/hex_bytes.h"

namespace {

using codecs::LaceVorbisHeaders;
using codecs::TakeVorbisHeadersApart;
using codecs::VorbisHeaders;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;

TEST(VorbisHeadersTest, WhatIsPutTogetherIsTakenApartAgain) {
    const Bytes identification(30, 1);
    const Bytes comment(255, 3);
    const Bytes setup(4000, 5);
    const Bytes laced = LaceVorbisHeaders({identification, comment, setup});
    EXPECT_EQ(ToHex(laced).substr(0, 8), "021eff00");
    EXPECT_EQ(laced.size(), 4 + 30 + 255 + 4000u);
    const auto headers = TakeVorbisHeadersApart(laced);
    ASSERT_TRUE(headers.has_value());
    EXPECT_EQ(ToHex((*headers)[0]), ToHex(identification));
    EXPECT_EQ(ToHex((*headers)[1]), ToHex(comment));
    EXPECT_EQ(ToHex((*headers)[2]), ToHex(setup));
}

TEST(VorbisHeadersTest, OtherThanThreePacketsOrSizesThatDoNotFitAreNone) {
    EXPECT_TRUE(TakeVorbisHeadersApart(FromHex("02 01 01 aabbcc")).has_value());
    EXPECT_FALSE(TakeVorbisHeadersApart(FromHex("01 01 aabb")).has_value());
    EXPECT_FALSE(TakeVorbisHeadersApart(FromHex("03 01 01 01 aabbccdd")).has_value());
    EXPECT_FALSE(TakeVorbisHeadersApart(FromHex("02 01 09 aabbcc")).has_value());
    EXPECT_FALSE(TakeVorbisHeadersApart({}).has_value());
}

} // namespace

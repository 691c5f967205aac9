#include <gtest/gtest.h>

#include "sources/annexb/index_builder.h"
#include "tests/sources/hostile_inputs/input_cost.h"

namespace test_hostile {
namespace {

constexpr size_t kSize = size_t{256} * 1024;

// Units of one byte that begin nothing, and a stream of nothing but zeros.
TEST(HostileByteStream, WhatHoldsNoPictureIsReadAFewTimesAtMost) {
    Bytes units;
    while (units.size() < kSize) {
        units.insert(units.end(), {0, 0, 1, 0x0c});
    }
    for (const Bytes& bytes : {units, Bytes(kSize)}) {
        for (const auto& open : {OpenAvc, OpenHevc}) {
            const Cost cost = CostOf(open, bytes);
            EXPECT_TRUE(cost.isRefused);
            EXPECT_LE(cost.readBytes, 4 * bytes.size());
        }
    }
}

TEST(HostileByteStream, PicturesAboveTheirNumberArePassedOverAsDamage) {
    constexpr size_t kMost = 1000;
    annexb::IndexBuilder builder(kMost);
    for (size_t i = 0; i < kMost; ++i) {
        builder.BeginPicture({10 * i + 3, 10 * i + 9}, 0, static_cast<INT32>(i), false);
    }
    builder.BeginPicture({10 * kMost + 3, 10 * kMost + 9}, 0, 0, false);
    builder.Extend({10 * kMost + 13, 10 * kMost + 19});
    const annexb::PictureIndex index = builder.Take();
    ASSERT_EQ(index.pictures.size(), kMost);
    EXPECT_EQ(index.pictures.back().end, 10 * (kMost - 1) + 9) << "what follows is not its";
    EXPECT_TRUE(index.isDamaged);
}

} // namespace
} // namespace test_hostile

#include "codecs/opus_packet.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

uint32_t SamplesOf(std::vector<uint8_t> packet) {
    return codecs::OpusPacketSamples(packet);
}

// The table of RFC 6716: each configuration's frame in units of 2.5 ms, one frame a packet.
TEST(OpusPacketTest, EveryConfigurationHasItsLength) {
    constexpr uint32_t kUnits[32] = {4, 8, 16, 24, 4, 8, 16, 24, 4, 8, 16, 24, 4, 8, 4, 8,
                                     1, 2, 4,  8,  1, 2, 4,  8,  1, 2, 4,  8,  1, 2, 4, 8};
    for (unsigned configuration = 0; configuration < 32; ++configuration) {
        const auto first = static_cast<uint8_t>(configuration << 3 | 4); // stereo does not matter
        EXPECT_EQ(SamplesOf({first}), kUnits[configuration] * 120) << configuration;
    }
}

TEST(OpusPacketTest, FramesAreCounted) {
    constexpr uint8_t kCelt20 = 31 << 3;
    EXPECT_EQ(SamplesOf({kCelt20}), 960u);
    EXPECT_EQ(SamplesOf({kCelt20 | 1}), 1920u);
    EXPECT_EQ(SamplesOf({kCelt20 | 2, 0}), 1920u);
    EXPECT_EQ(SamplesOf({kCelt20 | 3, 3}), 2880u);
    EXPECT_EQ(SamplesOf({kCelt20 | 3, 0x80 | 0x40 | 5}), 4800u) << "the flags above the count";
    EXPECT_EQ(SamplesOf({kCelt20 | 3, 6}), 5760u) << "120 ms";
}

TEST(OpusPacketTest, WhatIsNoPacketHasNoLength) {
    constexpr uint8_t kCelt20 = 31 << 3;
    EXPECT_EQ(SamplesOf({}), 0u);
    EXPECT_EQ(SamplesOf({kCelt20 | 3}), 0u);
    EXPECT_EQ(SamplesOf({kCelt20 | 3, 0}), 0u);
    EXPECT_EQ(SamplesOf({kCelt20 | 3, 7}), 0u) << "more than 120 ms";
}

} // namespace

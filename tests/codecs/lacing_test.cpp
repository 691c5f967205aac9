#include "codecs/lacing.h"

#include <string>

#include <gmock/gmock.h>

namespace codecs {
namespace {

using testing::ElementsAre;

// The frames as texts; "damaged" alone when there are none.
std::vector<std::string> Frames(const std::string& payload, uint8_t lacing) {
    const std::vector<uint8_t> bytes(payload.begin(), payload.end());
    const auto frames = TakeFramesApart(bytes, lacing);
    if (!frames) {
        return {"damaged"};
    }
    std::vector<std::string> texts;
    for (const ByteView frame : *frames) {
        texts.emplace_back(frame.begin(), frame.end());
    }
    return texts;
}

std::string Filled(size_t count) {
    return std::string(count, 'x');
}

TEST(Lacing, WithoutLacingTheBlockIsOneFrame) {
    EXPECT_THAT(Frames("abc", 0), ElementsAre("abc"));
    EXPECT_THAT(Frames("", 0), ElementsAre(""));
}

TEST(Lacing, XiphSizesAreSumsOfBytes) {
    EXPECT_THAT(Frames(std::string("\2\1\2", 3) + "abbccc", 2), ElementsAre("a", "bb", "ccc"));
    EXPECT_THAT(Frames("\1\xff" + std::string(1, '\0') + Filled(255) + "z", 2), ElementsAre(Filled(255), "z"));
    EXPECT_THAT(Frames("\1\xff\xff\x05" + Filled(515) + "z", 2), ElementsAre(Filled(515), "z"));
}

TEST(Lacing, EbmlSizesAreDifferences) {
    EXPECT_THAT(Frames("\x02\x83\xc0xxxyyyyzz", 6), ElementsAre("xxx", "yyyy", "zz")); // 3, 3 + 1
    EXPECT_THAT(Frames("\x02\x83\xbdxxxyzz", 6), ElementsAre("xxx", "y", "zz"));       // 3, 3 - 2
    EXPECT_THAT(Frames(std::string("\x01\x41\x2c", 3) + Filled(300) + "z", 6), ElementsAre(Filled(300), "z"));
}

TEST(Lacing, FixedSizesShareTheBlockEvenly) {
    EXPECT_THAT(Frames("\2aabbcc", 4), ElementsAre("aa", "bb", "cc"));
    EXPECT_THAT(Frames("\2aabbc", 4), ElementsAre("damaged"));
}

TEST(Lacing, SizesThatThePayloadDoesNotHoldAreDamage) {
    for (const uint8_t lacing : {uint8_t{2}, uint8_t{4}, uint8_t{6}}) {
        EXPECT_THAT(Frames("", lacing), ElementsAre("damaged"));
    }
    EXPECT_THAT(Frames("\1\5abc", 2), ElementsAre("damaged"));
    EXPECT_THAT(Frames("\3\xff\xff\xff", 2), ElementsAre("damaged"));
    EXPECT_THAT(Frames("\x01\x85"
                       "abc",
                       6),
                ElementsAre("damaged"));
    EXPECT_THAT(Frames("\x02\x81\x80"
                       "abcdefgh",
                       6),
                ElementsAre("damaged")); // 1, 1 - 63
    EXPECT_THAT(Frames(std::string("\x01\x00", 2) + "abc", 6), ElementsAre("damaged"));
}

TEST(Lacing, WhatIsLacedTheXiphWayIsTakenApartAgain) {
    std::vector<std::string> texts;
    for (const size_t size : {0, 1, 254, 255, 256, 510, 511, 1000, 3}) {
        texts.push_back(Filled(size));
    }
    std::vector<std::vector<uint8_t>> packets;
    for (const std::string& text : texts) {
        packets.emplace_back(text.begin(), text.end());
    }
    const std::vector<uint8_t> payload = LaceXiph(std::vector<ByteView>(packets.begin(), packets.end()));
    EXPECT_EQ(Frames({payload.begin(), payload.end()}, kXiphLacing), texts);
}

TEST(Lacing, ASingleFrameHasNoSizeInXiphLacing) {
    const std::vector<uint8_t> frame(300, 'x');
    const std::vector<uint8_t> payload = LaceXiph(std::vector<ByteView>{frame});
    EXPECT_EQ(std::string(payload.begin(), payload.end()), std::string(1, '\0') + Filled(300));
}

TEST(Lacing, EveryPayloadIsCutWithinItsBounds) {
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            const std::vector<uint8_t> payload{
                static_cast<uint8_t>(first), static_cast<uint8_t>(second), 0x81, 0xff, 7, 0, 1};
            for (const uint8_t lacing : {uint8_t{2}, uint8_t{4}, uint8_t{6}}) {
                if (const auto frames = TakeFramesApart(payload, lacing)) {
                    ASSERT_EQ(frames->size(), first + 1);
                    ASSERT_LE(frames->back().data() + frames->back().size(), payload.data() + payload.size());
                }
            }
        }
    }
}

} // namespace
} // namespace codecs

// What AV1 tells of its colours, as encoders wrote it.
#include "codecs/av1_colour.h"

#include <gtest/gtest.h>

namespace {

using codecs::Av1ColourOf;
using codecs::MasteringDisplay;
using codecs::StreamColour;
using Bytes = std::vector<uint8_t>;

// A record of ten bits in BT.2020 and PQ, with the light of the content and of the display it was made on.
const Bytes kHdr{0x81, 0x00, 0x4c, 0x00, 0x0a, 0x0d, 0,    0,    0,    0x03, 0x37, 0xf8, 0xe7, 0xdf,
                 0xca, 0x84, 0x88, 0x04, 0x82, 0x2a, 0x06, 0x01, 0x03, 0xe8, 0x01, 0x90, 0x80, 0x2a,
                 0x1a, 0x02, 0xae, 0x14, 0x51, 0xec, 0x43, 0xd7, 0xb0, 0xa4, 0x26, 0x66, 0x0f, 0x5c,
                 0x50, 0x0d, 0x54, 0x39, 0x00, 0x03, 0xe8, 0x00, 0x00, 0x00, 0x00, 0xa4, 0x80};
// Eight bits, nothing told.
const Bytes kPlain{0x81, 0x00, 0x0c, 0x00, 0x0a, 0x0a, 0, 0, 0, 0x03, 0x37, 0xf8, 0xe6, 0xd7, 0xc8, 0x02};
constexpr size_t kRecordHead = 4;
constexpr size_t kHeaderEnd = 19;

TEST(Av1ColourTest, ARecordTellsSignalAndLight) {
    const StreamColour colour = Av1ColourOf(kHdr);
    EXPECT_TRUE(colour.hasParameters);
    EXPECT_EQ(colour.bitDepth, 10u);
    EXPECT_EQ(colour.signal.primaries, 9);
    EXPECT_EQ(colour.signal.transfer, 16);
    EXPECT_EQ(colour.signal.matrix, 9);
    EXPECT_EQ(colour.signal.isFullRange, false);
    EXPECT_EQ(colour.light.maxContentLight, uint16_t{1000});
    EXPECT_EQ(colour.light.maxFrameAverageLight, uint16_t{400});
    ASSERT_TRUE(colour.light.mastering && colour.light.mastering->gamut && colour.light.mastering->luminance);
    EXPECT_EQ(colour.light.mastering->gamut->red, (MasteringDisplay::Point{0xae14 / 65536.0, 0x51ec / 65536.0}));
    EXPECT_EQ(colour.light.mastering->gamut->white, (MasteringDisplay::Point{0x500d / 65536.0, 0x5439 / 65536.0}));
    EXPECT_EQ(colour.light.mastering->luminance, (MasteringDisplay::Luminance{1000, 0xa4 / 16384.0}));
}

TEST(Av1ColourTest, UnitsTellTheSameUntilTheFirstFrame) {
    const Bytes units(kHdr.begin() + kRecordHead, kHdr.end());
    EXPECT_EQ(Av1ColourOf(units).light, Av1ColourOf(kHdr).light);
    Bytes behindAFrame(units.begin(), units.begin() + (kHeaderEnd - kRecordHead));
    behindAFrame.insert(behindAFrame.end(), {6 << 3 | 2, 1, 0x10});
    behindAFrame.insert(behindAFrame.end(), units.begin() + (kHeaderEnd - kRecordHead), units.end());
    EXPECT_TRUE(Av1ColourOf(behindAFrame).hasParameters);
    EXPECT_EQ(Av1ColourOf(behindAFrame).light, codecs::LightMetadata());
}

TEST(Av1ColourTest, WhatIsNotToldIsUnspecified) {
    const StreamColour colour = Av1ColourOf(kPlain);
    EXPECT_EQ(colour.bitDepth, 8u);
    EXPECT_EQ(colour.signal.primaries, codecs::kUnspecifiedColour);
    EXPECT_EQ(colour.signal.isFullRange, false);
    EXPECT_EQ(colour.light, codecs::LightMetadata());
    EXPECT_FALSE(Av1ColourOf({}).hasParameters);
}

TEST(Av1ColourTest, WhatIsCutOffTellsNothingOfItself) {
    const codecs::LightMetadata whole = Av1ColourOf(kHdr).light;
    for (size_t size = 0; size < kHdr.size(); ++size) {
        const Bytes cut(kHdr.begin(), kHdr.begin() + static_cast<std::ptrdiff_t>(size));
        const StreamColour colour = Av1ColourOf(cut);
        EXPECT_FALSE(colour.light.mastering) << size;
        EXPECT_TRUE(!colour.light.maxContentLight || colour.light.maxContentLight == whole.maxContentLight) << size;
    }
}

} // namespace

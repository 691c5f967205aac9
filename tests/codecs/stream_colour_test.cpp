// What streams tell of their colours: the VUI of their parameter sets, and the messages in front of their pictures.
#include "codecs/stream_colour.h"

#include <gtest/gtest.h>

#include <random>

#include "codecs/avc_parameter_sets.h"
#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"
#include "tests/codecs/hevc_sps_writer.h"
#include "tests/codecs/stream_writer.h"

namespace {

using namespace codecs;
using mkv_test::BitWriter;
using mkv_test::HevcSpsShape;
using mkv_test::SignalShape;
using mkv_test::Vui;
using test_annexb::AvcSpsShape;
using test_annexb::Bytes;

constexpr uint32_t kHdr10 = 0x091009; // BT.2020 primaries, PQ, BT.2020 matrix

Bytes WithoutStartCode(const Bytes& stream) {
    return {stream.begin() + 4, stream.end()};
}

Bytes AvcSpsUnit(const SignalShape& signal) {
    AvcSpsShape shape;
    shape.signal = signal;
    return WithoutStartCode(WriteAvcSps(shape));
}

Bytes HevcSpsUnit(const SignalShape& signal, uint32_t chromaFormatIdc = 1) {
    HevcSpsShape shape;
    shape.bitDepthLumaMinus8 = 2;
    shape.chromaFormatIdc = chromaFormatIdc;
    shape.vui = Vui();
    shape.vui->signal = signal;
    shape.vui->minSpatialSegmentationIdc = 77;
    return WriteHevcSps(shape);
}

StreamColour OfHevc(const std::vector<Bytes>& units) {
    const std::vector<ByteView> views(units.begin(), units.end());
    return HevcColourOf(views);
}

StreamColour OfAvc(const std::vector<Bytes>& units) {
    const std::vector<ByteView> views(units.begin(), units.end());
    return AvcColourOf(views);
}

VideoSignal Signal(uint8_t primaries, uint8_t transfer, uint8_t matrix) {
    return {primaries, transfer, matrix, {}, {}};
}

// ---- VUI

TEST(VideoSignalTest, BothCodecsTellItInTheSameWay) {
    VideoSignal expected = Signal(9, 16, 9);
    expected.isFullRange = false;
    expected.chromaLocation = uint8_t{2};
    const SignalShape written{true, false, kHdr10, 2};
    EXPECT_EQ(OfAvc({AvcSpsUnit(written)}).signal, expected);
    EXPECT_EQ(OfHevc({HevcSpsUnit(written)}).signal, expected);
    EXPECT_EQ(ParseHevcSps(HevcSpsUnit(written)).minSpatialSegmentationIdc, 77u); // what lies behind is found
    EXPECT_EQ(ParseAvcSps(AvcSpsUnit(written))->shape.aspectX, 320u * 12);
}

TEST(VideoSignalTest, EachPartMayBeMissing) {
    EXPECT_EQ(OfAvc({AvcSpsUnit({})}).signal, VideoSignal());
    VideoSignal range;
    range.isFullRange = true;
    EXPECT_EQ(OfAvc({AvcSpsUnit({false, true, {}, {}})}).signal, range);
    EXPECT_EQ(OfHevc({HevcSpsUnit({false, true, {}, {}})}).signal, range);
    VideoSignal location;
    location.chromaLocation = uint8_t{0};
    EXPECT_EQ(OfHevc({HevcSpsUnit({false, {}, {}, 0})}).signal, location);
    EXPECT_EQ(OfAvc({WithoutStartCode(test_annexb::WriteAvcSps())}).signal, VideoSignal());
}

TEST(VideoSignalTest, ChromaLocationsThatCannotBeAreNone) {
    EXPECT_EQ(OfAvc({AvcSpsUnit({false, {}, {}, 5})}).signal.chromaLocation, uint8_t{5});
    EXPECT_FALSE(OfAvc({AvcSpsUnit({false, {}, {}, 6})}).signal.chromaLocation);
    EXPECT_TRUE(OfHevc({HevcSpsUnit({false, {}, {}, 2}, 1)}).signal.chromaLocation);
    EXPECT_FALSE(OfHevc({HevcSpsUnit({false, {}, {}, 2}, 2)}).signal.chromaLocation); // 4:2:2 has no choice
}

// All of it, or nothing: a value that was cut off would look like a reserved one.
TEST(VideoSignalTest, AVuiThatIsCutOffTellsNothing) {
    const SignalShape written{true, false, kHdr10, 2};
    for (const Bytes& whole : {AvcSpsUnit(written), HevcSpsUnit(written)}) {
        for (size_t size = 0; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            const bool isAvc = whole[0] == 0x67;
            const VideoSignal signal = isAvc ? OfAvc({cut}).signal : OfHevc({cut}).signal;
            EXPECT_TRUE(signal == VideoSignal() || signal.transfer == 16) << size;
        }
    }
}

// ---- messages

Bytes Payload(const BitWriter& bits) {
    return bits.Bytes();
}

// As an encoder writes it for that display: green, blue, red, white.
BitWriter& Points(BitWriter& bits) {
    for (const uint64_t value : {13250, 34500, 7500, 3000, 34000, 16000, 15635, 16450}) {
        bits.Bits(value, 16);
    }
    return bits;
}

Bytes Mastering(uint64_t maximum = 10000000, uint64_t minimum = 50) {
    BitWriter bits;
    return Payload(Points(bits).Bits(maximum, 32).Bits(minimum, 32));
}

Bytes ContentLight(uint16_t most, uint16_t average) {
    return Payload(BitWriter().Bits(most, 16).Bits(average, 16));
}

Bytes Message(uint8_t type, const Bytes& payload) {
    Bytes message{type, static_cast<uint8_t>(payload.size())};
    message.insert(message.end(), payload.begin(), payload.end());
    return message;
}

// A unit of these messages, with emulation prevention.
Bytes MessageUnit(const Bytes& header, const std::vector<Bytes>& messages) {
    BitWriter bits;
    for (const Bytes& message : messages) {
        for (const uint8_t byte : message) {
            bits.Bits(byte, 8);
        }
    }
    bits.Bits(0x80, 8);
    return WithoutStartCode(test_annexb::Unit(header, bits));
}

const Bytes kHevcSei{39 << 1, 1};
const Bytes kAvcSei{6};

TEST(LightMetadataTest, TellsTheDisplayAndTheLight) {
    for (const bool isAvc : {false, true}) {
        const Bytes unit = MessageUnit(isAvc ? kAvcSei : kHevcSei, {Message(5, Bytes(20, 7)), Message(137, Mastering()),
                                                                    Message(144, ContentLight(1000, 400))});
        const LightMetadata light = isAvc ? OfAvc({unit}).light : OfHevc({unit}).light;
        ASSERT_TRUE(light.mastering && light.mastering->gamut && light.mastering->luminance);
        EXPECT_EQ(light.mastering->gamut->red, (MasteringDisplay::Point{0.68, 0.32}));
        EXPECT_EQ(light.mastering->gamut->green, (MasteringDisplay::Point{0.265, 0.69}));
        EXPECT_EQ(light.mastering->gamut->blue, (MasteringDisplay::Point{0.15, 0.06}));
        EXPECT_EQ(light.mastering->gamut->white, (MasteringDisplay::Point{0.3127, 0.329}));
        EXPECT_EQ(light.mastering->luminance, (MasteringDisplay::Luminance{1000, 0.005}));
        EXPECT_EQ(light.maxContentLight, uint16_t{1000});
        EXPECT_EQ(light.maxFrameAverageLight, uint16_t{400});
        EXPECT_FALSE(light.preferredTransfer);
    }
}

TEST(LightMetadataTest, TheTransferThatIsPreferredIsTold) {
    EXPECT_EQ(OfHevc({MessageUnit(kHevcSei, {Message(147, {18})})}).light.preferredTransfer, uint8_t{18});
    EXPECT_FALSE(OfHevc({MessageUnit(kHevcSei, {Message(147, {2})})}).light.preferredTransfer);
    EXPECT_FALSE(OfHevc({MessageUnit(kHevcSei, {Message(147, {})})}).light.preferredTransfer);
}

TEST(LightMetadataTest, ZerosAndWhatNoDisplayHasSayNothing) {
    EXPECT_EQ(OfHevc({MessageUnit(kHevcSei, {Message(137, Bytes(24, 0)), Message(144, ContentLight(0, 0))})}).light,
              LightMetadata());
    const LightMetadata light = OfHevc({MessageUnit(kHevcSei, {Message(144, ContentLight(0, 5))})}).light;
    EXPECT_FALSE(light.maxContentLight);
    EXPECT_EQ(light.maxFrameAverageLight, uint16_t{5});
    Bytes tooGreen = Mastering();
    tooGreen[0] = 0xff;
    const LightMetadata luminanceAlone = OfHevc({MessageUnit(kHevcSei, {Message(137, tooGreen)})}).light;
    ASSERT_TRUE(luminanceAlone.mastering);
    EXPECT_FALSE(luminanceAlone.mastering->gamut);
    EXPECT_TRUE(luminanceAlone.mastering->luminance);
    const LightMetadata gamutAlone = OfHevc({MessageUnit(kHevcSei, {Message(137, Mastering(50, 50))})}).light;
    ASSERT_TRUE(gamutAlone.mastering);
    EXPECT_TRUE(gamutAlone.mastering->gamut);
    EXPECT_FALSE(gamutAlone.mastering->luminance);
}

TEST(LightMetadataTest, TheFirstOfAKindCounts) {
    const StreamColour colour = OfHevc({MessageUnit(kHevcSei, {Message(144, ContentLight(1, 2))}),
                                        MessageUnit(kHevcSei, {Message(144, ContentLight(3, 4)), Message(147, {16})}),
                                        MessageUnit(kHevcSei, {Message(147, {18})})});
    EXPECT_EQ(colour.light.maxContentLight, uint16_t{1});
    EXPECT_EQ(colour.light.preferredTransfer, uint8_t{16});
}

TEST(LightMetadataTest, AMessageThatIsCutOffTellsNothing) {
    const Bytes whole = Mastering();
    for (size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_FALSE(OfHevc({MessageUnit(kHevcSei, {Message(137, cut)})}).light.mastering) << size;
        Bytes lying = Message(137, cut); // it says that it is whole
        lying[1] = 24;
        Bytes unit = kHevcSei;
        unit.insert(unit.end(), lying.begin(), lying.end());
        EXPECT_FALSE(OfHevc({unit}).light.mastering) << size;
    }
    EXPECT_FALSE(OfHevc({MessageUnit(kHevcSei, {Message(144, {1, 2, 3})})}).light.maxContentLight);
}

// ---- a stream

TEST(StreamColourTest, TheFirstParameterSetCountsAndOtherLayersDoNot) {
    Bytes otherLayer = HevcSpsUnit({false, true, kHdr10, {}});
    otherLayer[1] = 1 << 3 | 1;
    const StreamColour colour =
        OfHevc({otherLayer, HevcSpsUnit({false, false, 0x010101, {}}), HevcSpsUnit({false, false, kHdr10, {}})});
    EXPECT_TRUE(colour.hasParameters);
    EXPECT_EQ(colour.bitDepth, 10u);
    EXPECT_EQ(colour.signal.transfer, 1);
    EXPECT_FALSE(OfHevc({otherLayer}).hasParameters);
    EXPECT_FALSE(OfHevc({}).hasParameters);
}

TEST(StreamColourTest, ReadingEndsAtTheFirstSlice) {
    const Bytes light = MessageUnit(kHevcSei, {Message(144, ContentLight(1, 2))});
    const Bytes slice{1 << 1, 1, 0xff};
    EXPECT_TRUE(OfHevc({light, slice}).light.maxContentLight);
    EXPECT_FALSE(OfHevc({slice, light}).light.maxContentLight);
    const Bytes avcLight = MessageUnit(kAvcSei, {Message(144, ContentLight(1, 2))});
    EXPECT_FALSE(OfAvc({Bytes{0x65, 1, 2}, avcLight}).light.maxContentLight);
    EXPECT_TRUE(OfAvc({Bytes{0x09, 0xf0}, avcLight}).light.maxContentLight);
}

TEST(StreamColourTest, EndlessUnitsAreNotLookedAt) {
    const Bytes light = MessageUnit(kHevcSei, {Message(144, ContentLight(1, 2))});
    const Bytes delimiter{35 << 1, 1, 0x50};
    std::vector<Bytes> units(63, delimiter);
    units.push_back(light);
    EXPECT_TRUE(OfHevc(units).light.maxContentLight);
    units.insert(units.begin(), delimiter);
    EXPECT_FALSE(OfHevc(units).light.maxContentLight);
    Bytes huge = light;
    huge.resize(65536);
    EXPECT_FALSE(OfHevc({huge}).light.maxContentLight);
    huge.resize(65535);
    EXPECT_TRUE(OfHevc({huge}).light.maxContentLight);
}

TEST(StreamColourTest, UnitsOfASampleAreFoundByTheirLengths) {
    const Bytes sample{0, 0, 0, 2, 7, 8, 0, 0, 0, 1, 9, 0, 0, 0, 9, 1, 2};
    const std::vector<ByteView> units = FirstUnitsOf(sample, 4);
    ASSERT_EQ(units.size(), 3u);
    EXPECT_EQ(units[0].size(), 2u);
    EXPECT_EQ(units[1].front(), 9);
    EXPECT_EQ(units[2].size(), 2u); // cut off
    EXPECT_EQ(FirstUnitsOf(Bytes{1, 5, 0, 0, 2, 1, 1}, 1).size(), 4u);
    EXPECT_EQ(FirstUnitsOf(Bytes(1000, 0), 4).size(), 64u);
    EXPECT_TRUE(FirstUnitsOf(Bytes{0, 0, 0, 1}, 4).empty());
}

TEST(StreamColourTest, RandomBytesAreReadWithinTheirBounds) {
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        Bytes unit(random() % 80);
        for (uint8_t& byte : unit) {
            byte = static_cast<uint8_t>(random());
        }
        if (!unit.empty()) {
            unit[0] = round % 2 == 0 ? uint8_t{39 << 1} : uint8_t{6};
        }
        const LightMetadata light = round % 2 == 0 ? OfHevc({unit}).light : OfAvc({unit}).light;
        EXPECT_NE(light.maxContentLight, uint16_t{0});
    }
}

} // namespace

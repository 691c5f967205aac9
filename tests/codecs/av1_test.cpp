// AV1: sequence headers and configuration records of encoders, and temporal units for containers.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "codecs/av1_configuration.h"
#include "codecs/av1_obu.h"
#include "codecs/av1_sequence_header.h"
#include "codecs/av1_units.h"
#include "tests/codecs/bit_writer.h"

namespace {

using codecs::Av1RandomAccess;
using mkv_test::BitWriter;
using Bytes = std::vector<uint8_t>;

// What encoders wrote, as records with their sequence headers.
const Bytes kMain{0x81, 0x00, 0x0c, 0x00, 0x0a, 0x0a, 0, 0, 0, 0x03, 0x37, 0xf8, 0xe6, 0xd7, 0xc8, 0x02};
const Bytes kHigh{0x81, 0x20, 0x00, 0x00, 0x0a, 0x0a, 0x20, 0, 0, 0x03, 0x37, 0xf8, 0xe6, 0xd7, 0xc8, 0x10};
const Bytes kTenBits{0x81, 0x00, 0x4c, 0x00, 0x0a, 0x0d, 0,    0,    0,   0x03,
                     0x37, 0xf8, 0xe0, 0x17, 0xc2, 0x84, 0x88, 0x04, 0x82};

const Bytes kMonochrome{0x81, 0x00, 0x1c, 0x00, 0x0a, 0x0a, 0, 0, 0, 0x03, 0x37, 0xf8, 0xe6, 0xd7, 0xc9, 0x50};
const Bytes kStillPicture{0x81, 0x00, 0x0c, 0x00, 0x0a, 0x06, 0x18, 0x19, 0xbf, 0xc7, 0x68, 0x02};
const Bytes kAnyLevel{0x81, 0x1f, 0x0c, 0x00, 0x0a, 0x0d, 0,    0,    0,   0xf9,
                      0x9b, 0xfc, 0x71, 0x08, 0x54, 0x40, 0x80, 0x80, 0x85};
// With the light of the content and of the display it was made on.
const Bytes kHdr{0x81, 0x00, 0x4c, 0x00, 0x0a, 0x0d, 0,    0,    0,    0x03, 0x37, 0xf8, 0xe7, 0xdf,
                 0xca, 0x84, 0x88, 0x04, 0x82, 0x2a, 0x06, 0x01, 0x03, 0xe8, 0x01, 0x90, 0x80, 0x2a,
                 0x1a, 0x02, 0xae, 0x14, 0x51, 0xec, 0x43, 0xd7, 0xb0, 0xa4, 0x26, 0x66, 0x0f, 0x5c,
                 0x50, 0x0d, 0x54, 0x39, 0x00, 0x03, 0xe8, 0x00, 0x00, 0x00, 0x00, 0xa4, 0x80};
const std::vector<Bytes> kRecords{kMain, kHigh, kTenBits, kMonochrome, kStillPicture, kAnyLevel, kHdr};

Bytes UnitsOf(const Bytes& record) {
    return {record.begin() + 4, record.end()};
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

Bytes Obu(unsigned type, const Bytes& payload, bool hasSize = true) {
    Bytes obu{static_cast<uint8_t>(type << 3 | (hasSize ? 2U : 0U))};
    if (hasSize) {
        obu.push_back(static_cast<uint8_t>(payload.size())); // below 128
    }
    return Joined({obu, payload});
}

const Bytes kDelimiter{0x12, 0x00};
const Bytes kHeader = UnitsOf(kMain);
const Bytes kKeyFrame = Obu(6, {0x10, 1, 2}); // shows no other one, type 0, shown
const Bytes kHiddenKeyFrame = Obu(6, {0x00, 1});
const Bytes kInterFrame = Obu(6, {0x30, 3});
const Bytes kShowExisting = Obu(3, {0x80});

std::optional<Bytes> InPlace(Bytes& units) {
    const auto kept = codecs::CleanAv1UnitsInPlace(units);
    return kept ? std::optional(Bytes(kept->begin(), kept->end())) : std::nullopt;
}

// ---- Numbers and units ---------------------------------------------------------------------------------------------

TEST(Av1ObuTest, NumbersHaveUpTo32BitsInUpToEightBytes) {
    const auto value = [](const Bytes& bytes) {
        const auto number = codecs::ReadLeb128(bytes);
        return number ? std::to_string(number->value) + " in " + std::to_string(number->bytes) : "none";
    };
    EXPECT_EQ(value({0x00, 0xff}), "0 in 1");
    EXPECT_EQ(value({0xe5, 0x8e, 0x26}), "624485 in 3");
    EXPECT_EQ(value({0xff, 0xff, 0xff, 0xff, 0x0f}), "4294967295 in 5");
    EXPECT_EQ(value({0x80, 0x80, 0x80, 0x80, 0x10}), "none") << "33 bits";
    EXPECT_EQ(value({0x85, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}), "5 in 8");
    EXPECT_EQ(value({0x85, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x00}), "none") << "nine bytes";
    EXPECT_EQ(value({0x85, 0x80}), "none");
    EXPECT_EQ(value({}), "none");
}

TEST(Av1ObuTest, UnitsFollowEachOtherAndTheLastMayGoWithoutSize) {
    const Bytes extended{0x36, 0x20, 0x01, 9}; // of another layer
    const Bytes bytes = Joined({kDelimiter, extended, Obu(6, {1, 2, 3}, false)});
    codecs::Av1ObuReader reader(bytes);
    EXPECT_EQ(reader.Next()->type, codecs::Av1ObuType::TemporalDelimiter);
    const auto second = reader.Next();
    EXPECT_EQ(second->header.size(), 2u);
    EXPECT_EQ(Bytes(second->payload.begin(), second->payload.end()), Bytes{9});
    const auto third = reader.Next();
    EXPECT_FALSE(third->hasSizeField);
    EXPECT_EQ(third->payload.size(), 3u);
    EXPECT_FALSE(reader.Next());
    EXPECT_FALSE(reader.IsDamaged());
}

TEST(Av1ObuTest, WhatDoesNotLieInsideAsAWholeIsDamage) {
    EXPECT_TRUE(codecs::AreAv1Obus(kKeyFrame));
    EXPECT_FALSE(codecs::AreAv1Obus({}));
    EXPECT_FALSE(codecs::AreAv1Obus(Bytes{0x92, 0x00})) << "the forbidden bit";
    EXPECT_FALSE(codecs::AreAv1Obus(Bytes{0x16})) << "an extension that is not there";
    EXPECT_FALSE(codecs::AreAv1Obus(Bytes{0x12})) << "a size that is not there";
    EXPECT_FALSE(codecs::AreAv1Obus(Bytes{0x32, 0x02, 1}));
    for (size_t size = 1; size < kKeyFrame.size(); ++size) {
        EXPECT_FALSE(codecs::AreAv1Obus(Bytes(kKeyFrame.begin(), kKeyFrame.begin() + static_cast<ptrdiff_t>(size))));
    }
}

// ---- Sequence headers ----------------------------------------------------------------------------------------------

TEST(Av1SequenceHeaderTest, EncodersHeadersAreRead) {
    const auto main = codecs::FindAv1SequenceHeader(kHeader);
    ASSERT_TRUE(main);
    EXPECT_EQ(main->profile, 0);
    EXPECT_EQ(main->maxWidth, 128u);
    EXPECT_EQ(main->maxHeight, 72u);
    EXPECT_EQ(main->color.bitDepth, 8);
    EXPECT_FALSE(main->color.isDescribed);
    EXPECT_EQ(main->color.primaries, 2);
    const auto high = codecs::FindAv1SequenceHeader(kHigh);
    ASSERT_TRUE(high);
    EXPECT_EQ(high->profile, 1);
    EXPECT_FALSE(high->color.subsamplingX || high->color.subsamplingY);
    const auto tenBits = codecs::FindAv1SequenceHeader(kTenBits);
    ASSERT_TRUE(tenBits);
    EXPECT_EQ(tenBits->color.bitDepth, 10);
    EXPECT_TRUE(tenBits->color.isDescribed);
    EXPECT_EQ(tenBits->color.primaries, 9);
    EXPECT_EQ(tenBits->color.transferCharacteristics, 16);
    EXPECT_EQ(tenBits->color.matrixCoefficients, 9);
    EXPECT_FALSE(tenBits->color.isFullRange);
}

// The head of a header that is not reduced, with timing, decoder model and two operating points.
BitWriter TimedHead() {
    BitWriter bits;
    bits.Bits(2, 3).Flag(false).Flag(false);
    bits.Flag(true).Bits(1001, 32).Bits(60000, 32).Flag(true).UE(1); // two ticks a frame
    bits.Flag(true).Bits(9, 5).Bits(1, 32).Bits(9, 5).Bits(9, 5);    // delays of ten bits
    bits.Flag(true).Bits(1, 5);
    bits.Bits(0x101, 12).Bits(9, 5).Flag(true).Flag(true).Bits(0, 10).Bits(0, 10).Flag(false).Flag(true).Bits(3, 4);
    bits.Bits(0x103, 12).Bits(5, 5).Flag(false).Flag(false);
    bits.Bits(11, 4).Bits(11, 4).Bits(3839, 12).Bits(2159, 12);
    bits.Flag(true).Bits(0, 7);                                               // frames have numbers
    bits.Bits(0, 3).Bits(0, 4).Flag(true).Bits(0, 2);                         // order hint
    bits.Flag(false).Flag(true).Flag(false).Flag(true).Bits(6, 3).Bits(0, 3); // screen content, whole vectors
    return bits;
}

TEST(Av1SequenceHeaderTest, TimingDecoderModelAndLayersAreReadOver) {
    BitWriter bits = TimedHead();
    bits.Flag(true).Flag(true).Flag(false).Flag(false).Flag(true).Flag(true).Flag(true).Bits(2, 2); // 12 bits, 4:2:0
    bits.Flag(false).Flag(true);
    const Bytes payload = bits.Bytes();
    const auto header = codecs::ParseAv1SequenceHeader(payload);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->level, 9);
    EXPECT_EQ(header->tier, 1);
    EXPECT_EQ(header->frameTicks, 2002u);
    EXPECT_EQ(header->ticksPerSecond, 60000u);
    EXPECT_EQ(header->maxWidth, 3840u);
    EXPECT_EQ(header->maxHeight, 2160u);
    EXPECT_EQ(header->color.bitDepth, 12);
    EXPECT_TRUE(header->color.isFullRange);
    EXPECT_TRUE(header->color.subsamplingX && header->color.subsamplingY);
    EXPECT_EQ(header->color.chromaSamplePosition, 2);
    const auto record = codecs::BuildAv1Configuration(Obu(1, payload));
    ASSERT_TRUE(record);
    EXPECT_EQ(Bytes(record->begin(), record->begin() + 4), (Bytes{0x81, 0x49, 0xee, 0x00}));
}

TEST(Av1SequenceHeaderTest, SrgbAndMonochromeHaveNoSubsamplingToRead) {
    BitWriter srgb = TimedHead();
    srgb.Flag(false).Flag(false).Flag(true).Bits(1, 8).Bits(13, 8).Bits(0, 8).Flag(false).Flag(true);
    const auto color = codecs::ParseAv1SequenceHeader(srgb.Bytes());
    ASSERT_TRUE(color);
    EXPECT_TRUE(color->color.isFullRange);
    EXPECT_FALSE(color->color.subsamplingX);
    BitWriter mono = TimedHead();
    mono.Flag(true).Flag(false).Flag(true).Flag(false).Flag(true).Flag(false);
    const auto gray = codecs::ParseAv1SequenceHeader(mono.Bytes());
    ASSERT_TRUE(gray);
    EXPECT_TRUE(gray->color.isMonochrome);
    EXPECT_EQ(gray->color.bitDepth, 10);
    EXPECT_TRUE(gray->color.subsamplingX && gray->color.subsamplingY);
}

TEST(Av1SequenceHeaderTest, AHeaderThatEndsTooEarlyIsNone) {
    for (const Bytes& record : {kMain, kHigh, kTenBits, kMonochrome, kAnyLevel}) {
        const Bytes payload(record.begin() + 6, record.end());
        ASSERT_TRUE(codecs::ParseAv1SequenceHeader(payload));
        for (size_t size = 0; size + 1 < payload.size(); ++size) {
            const Bytes cut(payload.begin(), payload.begin() + static_cast<ptrdiff_t>(size));
            EXPECT_FALSE(codecs::ParseAv1SequenceHeader(cut)) << size;
        }
    }
    EXPECT_FALSE(codecs::ParseAv1SequenceHeader(Bytes(20, 0xe0))) << "a reserved profile";
}

// ---- Configuration records -----------------------------------------------------------------------------------------

TEST(Av1ConfigurationTest, AHeaderBecomesTheRecordThatEncodersWrote) {
    for (const Bytes& record : kRecords) {
        EXPECT_EQ(codecs::BuildAv1Configuration(UnitsOf(record)), record);
        EXPECT_EQ(codecs::BuildAv1Configuration(Joined({kDelimiter, UnitsOf(record), kKeyFrame})), record);
        EXPECT_EQ(codecs::BuildAv1Configuration(record), record) << "a record that is one stays";
    }
}

TEST(Av1ConfigurationTest, AHeaderWithoutSizeGetsOne) {
    const Bytes payload(kMain.begin() + 6, kMain.end());
    EXPECT_EQ(codecs::BuildAv1Configuration(Obu(1, payload, false)), kMain);
}

TEST(Av1ConfigurationTest, StaticMetadataFollowsTheHeader) {
    const Bytes light = Obu(5, {1, 0x03, 0xe8, 0x01, 0x90, 0x80});
    const Bytes ofOnePicture = Obu(5, {4, 0xb5, 0x80});
    const Bytes units = Joined({kDelimiter, light, ofOnePicture, kHeader, kKeyFrame});
    EXPECT_EQ(codecs::BuildAv1Configuration(units), Joined({kMain, light}));
    const Bytes record = Joined({kMain, light, ofOnePicture});
    EXPECT_EQ(codecs::BuildAv1Configuration(record), record);
}

TEST(Av1ConfigurationTest, TheDelayOfPresentationIsKeptAndAHeadThatIsWrongIsNot) {
    Bytes record = kMain;
    record[2] = 0x60;
    record[3] = 0xf5;
    Bytes expected = kMain;
    expected[3] = 0x15;
    EXPECT_EQ(codecs::BuildAv1Configuration(record), expected);
}

TEST(Av1ConfigurationTest, WithoutAHeaderThereIsNoRecord) {
    EXPECT_FALSE(codecs::BuildAv1Configuration({}));
    EXPECT_FALSE(codecs::BuildAv1Configuration(Bytes(kMain.begin(), kMain.begin() + 4)));
    EXPECT_FALSE(codecs::BuildAv1Configuration(kKeyFrame));
    EXPECT_FALSE(codecs::BuildAv1Configuration(Bytes(kMain.begin(), kMain.end() - 1))) << "a record that was cut";
    EXPECT_FALSE(codecs::BuildAv1Configuration(Joined({kHeader, {0x32, 0x7f}}))) << "damage behind the header";
}

// ---- Temporal units ------------------------------------------------------------------------------------------------

TEST(Av1UnitsTest, WhatSaysNothingInAContainerIsLeftOut) {
    const Bytes kept = Joined({kHeader, kKeyFrame, kShowExisting});
    Bytes units =
        Joined({kDelimiter, kHeader, Obu(15, {1, 2, 3}), kKeyFrame, Obu(7, {0x10}), Obu(8, {0}), kShowExisting});
    EXPECT_EQ(codecs::CleanAv1Units(units), kept);
    EXPECT_EQ(InPlace(units), kept);
    Bytes alone = kDelimiter;
    EXPECT_EQ(InPlace(alone), Bytes{});
    EXPECT_TRUE(codecs::CleanAv1Units(kDelimiter).empty());
}

TEST(Av1UnitsTest, AUnitWithoutSizeGetsOneInACopy) {
    const Bytes payload(200, 0x10);
    Bytes units = Joined({kDelimiter, {0x34, 0x08}, payload});
    const Bytes clean = Joined({{0x36, 0x08, 0xc8, 0x01}, payload});
    EXPECT_EQ(InPlace(units), std::nullopt);
    EXPECT_EQ(codecs::CleanAv1Units(units), clean);
    EXPECT_EQ(units[0], 0x12) << "nothing is changed";
}

TEST(Av1UnitsTest, DamageStaysAsItIs) {
    const Bytes damaged = Joined({kDelimiter, kKeyFrame, {0x32, 0x7f, 1}});
    Bytes units = damaged;
    EXPECT_EQ(codecs::CleanAv1Units(damaged), damaged);
    EXPECT_EQ(InPlace(units), damaged);
    Bytes none;
    EXPECT_EQ(InPlace(none), Bytes{});
}

TEST(Av1UnitsTest, DecodingBeginsAtAShownKeyFrameBehindAHeader) {
    EXPECT_EQ(codecs::RandomAccessOfAv1(Joined({kDelimiter, kHeader, kKeyFrame})), Av1RandomAccess::Yes);
    EXPECT_EQ(codecs::RandomAccessOfAv1(kKeyFrame), Av1RandomAccess::WithoutHeader);
    EXPECT_EQ(codecs::RandomAccessOfAv1(Joined({kHeader, kInterFrame})), Av1RandomAccess::No);
    EXPECT_EQ(codecs::RandomAccessOfAv1(Joined({kHeader, kHiddenKeyFrame, kKeyFrame})), Av1RandomAccess::No);
    EXPECT_EQ(codecs::RandomAccessOfAv1(Joined({kHeader, kShowExisting})), Av1RandomAccess::No);
    EXPECT_EQ(codecs::RandomAccessOfAv1(kHeader), std::nullopt);
    EXPECT_EQ(codecs::RandomAccessOfAv1({}), std::nullopt);
    EXPECT_EQ(codecs::RandomAccessOfAv1(Obu(6, {})), std::nullopt);
}

TEST(Av1UnitsTest, AReducedStillPictureIsAKeyFrameWithoutSayingSo) {
    BitWriter bits;
    bits.Bits(0, 3).Flag(true).Flag(true).Bits(0, 5);               // reduced
    bits.Bits(6, 4).Bits(6, 4).Bits(127, 7).Bits(71, 7).Bits(0, 6); // size, tools
    bits.Flag(false).Flag(false).Flag(false).Flag(true).Bits(1, 2).Bits(0, 2);
    const Bytes header = Obu(1, bits.Bytes());
    ASSERT_TRUE(codecs::FindAv1SequenceHeader(header));
    EXPECT_TRUE(codecs::FindAv1SequenceHeader(header)->isReduced);
    EXPECT_EQ(codecs::FindAv1SequenceHeader(header)->maxWidth, 128u);
    EXPECT_EQ(codecs::RandomAccessOfAv1(Joined({header, Obu(6, {0xff})})), Av1RandomAccess::Yes);
}

} // namespace

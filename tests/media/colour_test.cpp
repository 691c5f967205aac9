// Colours of tracks: from and to the control flags of a format block, and from what H.264 and H.265 streams tell.
#include "media/colour.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "media/colour_flags.h"
#include "media/described_colour.h"
#include "media/media_types_of.h"
#include "media/track_type.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::Colour;
using mkv_test::Bytes;
using test_support::MediaTypeValue;

// Of libx265: BT.2020, PQ, ten bits, chroma at the top left, limited range; its light, and the display.
const char* const kHdrVps = "40010c01ffff02200000030090000003000003001e959409";
const char* const kHdrSps = "42010102200000030090000003000003001ea02083136595952930bc05a848804db080000003008000000c84";
const char* const kHdrPps = "4401c073c089";
const char* const kLight = "4e01900403e8019080";
const char* const kDisplay = "4e01891833c286c41d4c0bb884d03e803d13404200989680000003003280";
// Of libx264: BT.709, full range, chroma at the top left.
const char* const kFullRangeSps = "6742c00ada11ec05b808080db800000300080000030190789135";
const char* const kAvcPps = "68ce0fc8";

Bytes Stream(std::initializer_list<const char*> units) {
    std::vector<Bytes> list;
    for (const char* const unit : units) {
        list.push_back(mkv_test::FromHex(unit));
    }
    return mkv_test::ByteStream(list);
}

Bytes Frame(std::initializer_list<const char*> units) {
    Bytes frame;
    for (const char* const unit : units) {
        const Bytes bytes = mkv_test::FromHex(unit);
        frame.insert(frame.end(), {0, 0, 0, static_cast<uint8_t>(bytes.size())});
        frame.insert(frame.end(), bytes.begin(), bytes.end());
    }
    return frame;
}

VIDEOINFOHEADER2& HeaderOf(MediaTypeValue& type) {
    return *reinterpret_cast<VIDEOINFOHEADER2*>(type.Get().pbFormat);
}

// "primaries transfer matrix range siting", - for what is not told.
std::string Static(const Colour& colour) {
    std::string text;
    for (const auto number : {Colour::kPrimaries, Colour::kTransfer, Colour::kMatrix, Colour::kRange,
                              Colour::kChromaSitingHorz, Colour::kChromaSitingVert}) {
        const auto& value = colour.numbers[number];
        text += (text.empty() ? "" : " ") + (value ? std::to_string(*value) : "-");
    }
    return text;
}

std::string Light(const Colour& colour) {
    std::string text;
    for (const auto number : {Colour::kMaxContentLight, Colour::kMaxFrameLight}) {
        const auto& value = colour.numbers[number];
        text += (value ? std::to_string(*value) : "-") + " ";
    }
    return text + (colour.TellsMastering() ? "display" : "-");
}

media::VideoDescription Described(const MediaTypeValue& type) {
    return media::DescribeStrictCodec(type.Get()).video.value_or(media::VideoDescription());
}

MediaTypeValue HevcType(const Bytes& header) {
    return test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, header);
}

// ---- Control flags

constexpr DWORD kThere = AMCONTROL_USED | AMCONTROL_COLORINFO_PRESENT;

DWORD Flags(DWORD chroma, DWORD range, DWORD matrix, DWORD primaries, DWORD transfer) {
    return kThere | chroma << 8 | range << 12 | matrix << 15 | primaries << 22 | transfer << 27;
}

TEST(ColourFlagsTest, EachFieldBecomesTheValueOfTheStandard) {
    EXPECT_EQ(Static(media::ColourOfFlags(Flags(5, 2, 1, 2, 5))), "1 1 1 1 1 2");   // high definition
    EXPECT_EQ(Static(media::ColourOfFlags(Flags(7, 2, 4, 9, 15))), "9 16 9 1 1 1"); // HDR10
    EXPECT_EQ(Static(media::ColourOfFlags(Flags(0, 1, 2, 5, 16))), "6 18 6 2 - -");
    EXPECT_EQ(Static(media::ColourOfFlags(Flags(1, 3, 0, 0, 0))), "- - - - 2 2"); // a range that Matroska lacks
    EXPECT_EQ(Static(media::ColourOfFlags(Flags(0, 0, 7, 31, 31))), "- - - - - -");
}

TEST(ColourFlagsTest, NothingIsToldWithoutTheMarks) {
    const DWORD whole = Flags(5, 2, 1, 2, 5);
    EXPECT_TRUE(media::ColourOfFlags(whole & ~DWORD{AMCONTROL_USED}).IsEmpty());
    EXPECT_TRUE(media::ColourOfFlags(whole & ~DWORD{AMCONTROL_COLORINFO_PRESENT}).IsEmpty());
    EXPECT_TRUE(media::ColourOfFlags(kThere).IsEmpty());
    EXPECT_EQ(media::FlagsOfColour(Colour()), 0u);
}

TEST(ColourFlagsTest, WhatFitsComesBack) {
    for (const DWORD flags :
         {Flags(5, 2, 1, 2, 5), Flags(7, 2, 4, 9, 15), Flags(1, 1, 2, 5, 16), Flags(0, 2, 0, 0, 0)}) {
        EXPECT_EQ(media::FlagsOfColour(media::ColourOfFlags(flags)), flags);
    }
    Colour colour;
    colour.numbers[Colour::kTransfer] = 12; // no flag
    colour.numbers[Colour::kMaxContentLight] = 1000;
    EXPECT_EQ(media::FlagsOfColour(colour), 0u);
}

TEST(ColourFlagsTest, AStreamIsExactWhereFlagsAreNot) {
    Colour colour = media::ColourOfFlags(Flags(0, 2, 2, 5, 13));
    EXPECT_EQ(Static(colour), "6 14 6 1 - -");
    Colour stream;
    stream.numbers[Colour::kMatrix] = 5;    // 601 as well
    stream.numbers[Colour::kTransfer] = 15; // 2020 as well
    stream.numbers[Colour::kPrimaries] = 1; // another word
    stream.numbers[Colour::kRange] = 2;
    media::TakeExact(stream, colour);
    EXPECT_EQ(Static(colour), "6 15 5 1 - -");
}

TEST(ColourTest, OfAStandardThatDoesNotExistNothingIsTold) {
    for (const UINT64 value : {0, 2, 3, 13, 21, 23, 255}) {
        EXPECT_FALSE(media::IsToldNumber(Colour::kPrimaries, value)) << value;
    }
    for (const UINT64 value : {0, 2, 3, 19, 255}) {
        EXPECT_FALSE(media::IsToldNumber(Colour::kTransfer, value)) << value;
    }
    EXPECT_TRUE(media::IsToldNumber(Colour::kMatrix, 0));
    EXPECT_FALSE(media::IsToldNumber(Colour::kMatrix, 2));
    EXPECT_FALSE(media::IsToldNumber(Colour::kChromaSitingHorz, 3));
    EXPECT_FALSE(media::IsToldMastering(Colour::kRedX, 1.5));
    EXPECT_TRUE(media::IsToldMastering(Colour::kMaxLuminance, 1.5));
    EXPECT_FALSE(media::IsToldMastering(Colour::kMaxLuminance, -1));
    EXPECT_FALSE(media::IsToldMastering(Colour::kMinLuminance, std::numeric_limits<double>::quiet_NaN()));
}

// ---- Streams

TEST(DescribedColourTest, ParameterSetsAndMessagesOfTheHeaderAreRead) {
    const auto video = Described(HevcType(Stream({kHdrVps, kHdrSps, kHdrPps, kLight, kDisplay})));
    EXPECT_EQ(Static(video.colour), "9 16 9 1 1 1");
    EXPECT_EQ(Light(video.colour), "1000 400 display");
    EXPECT_EQ(video.colour.mastering[Colour::kRedX], 0.68);
    EXPECT_EQ(video.colour.mastering[Colour::kGreenY], 0.69);
    EXPECT_EQ(video.colour.mastering[Colour::kBlueX], 0.15);
    EXPECT_EQ(video.colour.mastering[Colour::kWhiteY], 0.329);
    EXPECT_EQ(video.colour.mastering[Colour::kMaxLuminance], 1000);
    EXPECT_EQ(video.colour.mastering[Colour::kMinLuminance], 0.005);
    EXPECT_FALSE(video.mayTellColourLater); // it is all told
}

TEST(DescribedColourTest, TheFirstPictureTellsTheRest) {
    const MediaTypeValue type = HevcType(Stream({kHdrVps, kHdrSps, kHdrPps}));
    const auto video = Described(type);
    EXPECT_EQ(Static(video.colour), "9 16 9 1 1 1");
    EXPECT_EQ(Light(video.colour), "- - -");
    EXPECT_TRUE(video.mayTellColourLater);
    const Colour colour = media::ColourWithFirstFrame(type.Get(), Frame({kLight, kDisplay, "2801ac"}));
    EXPECT_EQ(Static(colour), "9 16 9 1 1 1");
    EXPECT_EQ(Light(colour), "1000 400 display");
    EXPECT_EQ(Light(media::ColourWithFirstFrame(type.Get(), Frame({"2801ac", kLight}))), "- - -");
}

TEST(DescribedColourTest, WithoutParameterSetsInTheHeaderThoseOfTheFirstPictureCount) {
    const MediaTypeValue type = HevcType({});
    EXPECT_TRUE(Described(type).mayTellColourLater);
    const Colour colour = media::ColourWithFirstFrame(type.Get(), Frame({kHdrVps, kHdrSps, kHdrPps, kLight}));
    EXPECT_EQ(Static(colour), "9 16 9 1 1 1");
    EXPECT_EQ(Light(colour), "1000 400 -");
}

TEST(DescribedColourTest, H264TellsItsVideoSignal) {
    const MediaTypeValue type =
        test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, Stream({kFullRangeSps, kAvcPps}));
    EXPECT_EQ(Static(Described(type).colour), "1 1 1 2 1 1");
    EXPECT_FALSE(Described(type).mayTellColourLater); // eight bits
    const Bytes header = mkv_test::LengthPrefixed({mkv_test::FromHex(kFullRangeSps), mkv_test::FromHex(kAvcPps)});
    EXPECT_EQ(Static(Described(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, header, 66, 10, 4)).colour),
              "1 1 1 2 1 1");
}

TEST(DescribedColourTest, ThePreferredTransferTakesThePlaceOfTheSets) {
    const MediaTypeValue type = HevcType(Stream({kHdrVps, kHdrSps, kHdrPps}));
    EXPECT_EQ(Static(media::ColourWithFirstFrame(type.Get(), Frame({"4e0193011280"}))), "9 18 9 1 1 1");
}

TEST(DescribedColourTest, FlagsOfTheTypeCountFirst) {
    MediaTypeValue type = HevcType(Stream({kHdrVps, kHdrSps, kHdrPps}));
    HeaderOf(type).dwControlFlags = Flags(0, 1, 1, 9, 0);
    EXPECT_EQ(Static(Described(type).colour), "9 16 1 2 1 1");
    MediaTypeValue vp9 = test_support::VideoInfo2Type(mediasubtype::kVp9);
    EXPECT_TRUE(Described(vp9).colour.IsEmpty());
    HeaderOf(vp9).dwControlFlags = Flags(5, 2, 4, 9, 15);
    EXPECT_EQ(Static(Described(vp9).colour), "9 16 9 1 1 2");
    EXPECT_FALSE(Described(vp9).mayTellColourLater);
}

TEST(DescribedColourTest, WhatATrackTellsComesBackInItsType) {
    media::TrackFacts track;
    track.type = media::kTrackTypeVideo;
    track.codecId = "V_VP9";
    track.video.pixelWidth = 320;
    track.video.pixelHeight = 240;
    track.video.colour = media::ColourOfFlags(Flags(7, 2, 4, 9, 15));
    const auto types = media::MediaTypesOf(track);
    ASSERT_FALSE(types.empty());
    EXPECT_EQ(media::DescribeStrictCodec(types[0]).video->colour, track.video.colour);
}

} // namespace

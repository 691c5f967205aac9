// What is told of colours beside the options: untold at first, one record an input, and never saved.
#include "records/track_colour.h"

#include <gtest/gtest.h>

#include <limits>

#include "records/file_options.h"

namespace {

using records::UntoldColour;

TEST(TrackColourTest, NothingIsToldAtFirst) {
    const MuxTrackColour colour = UntoldColour(4);
    EXPECT_EQ(4, colour.index);
    EXPECT_EQ(-1, colour.matrixCoefficients);
    EXPECT_EQ(-1, colour.maxFrameAverageLight);
    EXPECT_EQ(-1, colour.redX);
    EXPECT_EQ(-1, colour.minLuminance);
    EXPECT_TRUE(records::IsTrackColour(colour));
    EXPECT_FALSE(records::HasDolbyVision(colour));
}

TEST(TrackColourTest, EveryFieldIsInItsList) {
    MuxTrackColour colour = UntoldColour(0);
    colour.matrixCoefficients = 1;
    colour.bitsPerChannel = 2;
    colour.chromaSubsamplingHorz = 3;
    colour.chromaSubsamplingVert = 4;
    colour.cbSubsamplingHorz = 5;
    colour.cbSubsamplingVert = 6;
    colour.chromaSitingHorz = 7;
    colour.chromaSitingVert = 8;
    colour.range = 9;
    colour.transferCharacteristics = 10;
    colour.primaries = 11;
    colour.maxContentLight = 12;
    colour.maxFrameAverageLight = 13;
    INT32 expected = 1;
    for (INT32 MuxTrackColour::*const number : records::kColourNumbers) {
        EXPECT_EQ(colour.*number, expected++);
    }
}

TEST(TrackColourTest, NumbersThatAreNoneAreNoColour) {
    MuxTrackColour colour = UntoldColour(0);
    colour.whiteY = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(records::IsTrackColour(colour));
    colour.whiteY = 0;
    EXPECT_TRUE(records::IsTrackColour(colour));
    colour.range = -2;
    EXPECT_FALSE(records::IsTrackColour(colour));
}

TEST(TrackColourTest, OptionsKeepOneForEachInputAndSaveNone) {
    records::CFileOptions options;
    MuxTrackColour colour = UntoldColour(3);
    colour.primaries = 9;
    options.SetColour(colour);
    EXPECT_EQ(9, options.ColourOf(3).primaries);
    EXPECT_EQ(-1, options.ColourOf(2).primaries);
    EXPECT_TRUE(options.All().IsDefault());
    options.ReplaceAll({});
    EXPECT_EQ(9, options.ColourOf(3).primaries);
}

} // namespace

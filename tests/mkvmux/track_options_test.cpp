// What the options of a track make of the muxer's row.
#include "mkvmux/track_options.h"

#include <gtest/gtest.h>

namespace mkvmux {
namespace {

client::TrackRow Row() {
    return {3, 1, 0, 9, win::Bstr(L"Dutch"), win::Bstr(L"before"), MuxTrackType_Audio};
}

TEST(TrackOptionsTest, WhatIsNotSaidStaysAsItIs) {
    client::TrackRow row = Row();
    TrackOptions().ApplyTo(row);
    EXPECT_EQ(row.index, 3);
    EXPECT_EQ(row.enabled, 1);
    EXPECT_EQ(row.isDefault, 0);
    EXPECT_EQ(row.reserved, 9);
    EXPECT_EQ(row.language.View(), L"Dutch");
    EXPECT_EQ(row.name.View(), L"before");
    EXPECT_EQ(row.trackType, MuxTrackType_Audio);
}

TEST(TrackOptionsTest, WhatIsSaidReplacesWhatTheRowHas) {
    client::TrackRow row = Row();
    TrackOptions{L"after", L"French", true, true}.ApplyTo(row);
    EXPECT_EQ(row.enabled, 0);
    EXPECT_EQ(row.isDefault, 1);
    EXPECT_EQ(row.reserved, 9);
    EXPECT_EQ(row.language.View(), L"French");
    EXPECT_EQ(row.name.View(), L"after");
}

TEST(TrackOptionsTest, ADefaultFlagThatIsSaidToBeOffIsTakenAway) {
    client::TrackRow row = Row();
    row.isDefault = 1;
    TrackOptions options;
    options.isDefault = false;
    options.ApplyTo(row);
    EXPECT_EQ(row.isDefault, 0);
    EXPECT_TRUE(options.ChangesRow());
}

TEST(TrackOptionsTest, FlagsChangeWhatTheySayAndNoRow) {
    TrackOptions options;
    options.flags = {true, false, std::nullopt, std::nullopt, true};
    MuxTrackFlags flags{3, MuxFlag_Off, MuxFlag_Unset, MuxFlag_On, MuxFlag_Unset, MuxFlag_Unset};
    options.flags.ApplyTo(flags);
    EXPECT_EQ(flags.index, 3);
    EXPECT_EQ(flags.forced, MuxFlag_On);
    EXPECT_EQ(flags.hearingImpaired, MuxFlag_Off);
    EXPECT_EQ(flags.visualImpaired, MuxFlag_On);
    EXPECT_EQ(flags.original, MuxFlag_Unset);
    EXPECT_EQ(flags.commentary, MuxFlag_On);
    EXPECT_FALSE(options.ChangesRow());
    EXPECT_NE(options, TrackOptions());
}

TEST(TrackOptionsTest, AnEmptyNameRemovesTheName) {
    client::TrackRow row = Row();
    TrackOptions options;
    options.name = L"";
    options.ApplyTo(row);
    EXPECT_EQ(row.name.View(), L"");
    EXPECT_NE(options, TrackOptions()) << "it says something";
}

} // namespace
} // namespace mkvmux

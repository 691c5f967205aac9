#include "records/file_options.h"

#include <gtest/gtest.h>

#include <functional>

using records::CFileOptions;
using records::FileOptions;

namespace {

TEST(FileOptionsTest, BeginsCompatibleWithoutTitleAndSeedAndWithStatistics) {
    const FileOptions options = CFileOptions().Get();
    EXPECT_FALSE(options.isStrict());
    EXPECT_EQ(WideString(), options.title);
    EXPECT_EQ(0u, options.seed);
    EXPECT_TRUE(options.trackStatistics);
    EXPECT_TRUE(CFileOptions().All().IsDefault());
}

TEST(FileOptionsTest, EachFieldIsAChangeOnceAndNoDefault) {
    const std::function<void(FileOptions&)> edits[] = {
        [](FileOptions& options) { options.profile = MuxProfile_Strict; },
        [](FileOptions& options) { options.title = OLESTR("A film"); },
        [](FileOptions& options) { options.seed = 1; },
        [](FileOptions& options) { options.trackStatistics = false; },
    };
    for (const auto& edit : edits) {
        CFileOptions options;
        EXPECT_TRUE(options.Change(edit));
        EXPECT_FALSE(options.Change(edit));
        EXPECT_FALSE(options.All().IsDefault());
        EXPECT_TRUE(options.Change([](FileOptions& all) { all = {}; }));
        EXPECT_TRUE(options.All().IsDefault());
    }
}

TEST(FileOptionsTest, FlagsAreUnsetUntilTheyAreSetAndAgainWhenTheyAreUnset) {
    CFileOptions options;
    const MuxTrackFlags flags{7, MuxFlag_On, MuxFlag_Unset, MuxFlag_Off, MuxFlag_Unset, MuxFlag_Unset};
    EXPECT_FALSE(options.SetFlags(records::UnsetTrackFlags(7)));
    EXPECT_TRUE(options.SetFlags(flags));
    EXPECT_FALSE(options.SetFlags(flags));
    EXPECT_EQ(MuxFlag_On, options.FlagsOf(7).forced);
    EXPECT_EQ(MuxFlag_Off, options.FlagsOf(7).visualImpaired);
    EXPECT_TRUE(records::AreAllUnset(options.FlagsOf(8)));
    EXPECT_FALSE(options.All().IsDefault());
    EXPECT_TRUE(options.SetFlags(records::UnsetTrackFlags(7)));
    EXPECT_TRUE(options.All().IsDefault());
}

TEST(FileOptionsTest, EachOfTheFlagsIsAChange) {
    for (BYTE MuxTrackFlags::*const flag :
         {&MuxTrackFlags::forced, &MuxTrackFlags::hearingImpaired, &MuxTrackFlags::visualImpaired,
          &MuxTrackFlags::original, &MuxTrackFlags::commentary}) {
        MuxTrackFlags flags = records::UnsetTrackFlags(0);
        flags.*flag = MuxFlag_Off;
        CFileOptions options;
        EXPECT_TRUE(options.SetFlags(flags));
        EXPECT_TRUE(records::AreTrackFlags(flags));
        flags.*flag = 2;
        EXPECT_FALSE(records::AreTrackFlags(flags));
    }
}

TEST(FileOptionsTest, ATitleHasNoNullAndIsBounded) {
    EXPECT_TRUE(records::IsTitle({}));
    EXPECT_TRUE(records::IsTitle(WideString(records::kMaxTitleLength, OLESTR('a'))));
    EXPECT_FALSE(records::IsTitle(WideString(records::kMaxTitleLength + 1, OLESTR('a'))));
    EXPECT_FALSE(records::IsTitle(WideString(1, WCHAR{})));
    EXPECT_FALSE(records::IsTitle(WideString(OLESTR("a\0b"), 3)));
}

TEST(FileOptionsTest, ReplacingTakesTheOldFlagsAway) {
    CFileOptions options;
    EXPECT_TRUE(options.SetFlags({3, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On, MuxFlag_On}));
    options.ReplaceAll({});
    EXPECT_TRUE(records::AreAllUnset(options.FlagsOf(3)));
}

} // namespace

// Which chapters of a recording stand in one of its files, and where.
#include "records/part_chapters.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace records {
namespace {

constexpr INT64 kNone = MuxChapterTime_None;

Chapter Made(INT32 level, INT64 start, INT64 end, const WCHAR* title) {
    Chapter chapter;
    chapter.level = level;
    chapter.start = start;
    chapter.end = end;
    chapter.title = title;
    return chapter;
}

using Times = std::vector<std::pair<INT64, INT64>>;

Times TimesOf(const std::vector<Chapter>& chapters) {
    Times times;
    for (const Chapter& chapter : chapters) {
        times.emplace_back(chapter.start, chapter.end);
    }
    return times;
}

std::vector<Chapter> OpenOnes() {
    return {Made(0, 0, kNone, OLESTR("a")), Made(0, 350, kNone, OLESTR("b")), Made(0, 800, kNone, OLESTR("c"))};
}

TEST(PartChapters, OfTheWholeRecordingAreAsTheyWere) {
    EXPECT_EQ(OpenOnes(), ChaptersOfPart(OpenOnes(), {0, std::nullopt, 0}));
}

TEST(PartChapters, OneThatGoesOnBeginsWithTheFile) {
    EXPECT_EQ((Times{{0, kNone}, {50, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {300, 600, 300})));
    EXPECT_EQ((Times{{0, kNone}, {200, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {600, std::nullopt, 600})));
    EXPECT_EQ((Times{{300, kNone}, {350, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {300, 600, 0})));
}

TEST(PartChapters, OneThatBeginsWhereTheFileDoesIsInThatFileAlone) {
    EXPECT_EQ((Times{{0, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {350, 800, 350})));
    EXPECT_EQ((Times{{0, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {800, std::nullopt, 800})));
}

TEST(PartChapters, AFileWithPicturesBeforeItsKeyframeBeginsEarlier) {
    EXPECT_EQ((Times{{20, kNone}, {70, kNone}}), TimesOf(ChaptersOfPart(OpenOnes(), {300, 600, 280})));
}

TEST(PartChapters, AnEndThatIsToldIsCutWithTheFile) {
    const std::vector<Chapter> all{Made(0, 100, 500, OLESTR("a"))};
    EXPECT_EQ((Times{{100, 300}}), TimesOf(ChaptersOfPart(all, {0, 300, 0})));
    EXPECT_EQ((Times{{0, 200}}), TimesOf(ChaptersOfPart(all, {300, 600, 300})));
    EXPECT_TRUE(ChaptersOfPart(all, {500, 900, 500}).empty());
    EXPECT_TRUE(ChaptersOfPart(all, {0, 100, 0}).empty());
}

TEST(PartChapters, WithAChapterThatIsElsewhereGoItsPartsAndTitles) {
    const std::vector<Chapter> all{Made(0, 0, 300, OLESTR("a")),
                                   Made(MuxLevel_FurtherTitle, 0, kNone, OLESTR("A")),
                                   Made(1, 100, kNone, OLESTR("a1")),
                                   Made(0, 300, kNone, OLESTR("b")),
                                   Made(MuxLevel_FurtherTitle, 0, kNone, OLESTR("B")),
                                   Made(1, 400, kNone, OLESTR("b1")),
                                   Made(1, 700, kNone, OLESTR("b2"))};
    const auto kept = ChaptersOfPart(all, {500, std::nullopt, 500});
    ASSERT_EQ(4u, kept.size());
    EXPECT_EQ(OLESTR("b"), kept[0].title);
    EXPECT_EQ(OLESTR("B"), kept[1].title);
    EXPECT_EQ((Times{{0, kNone}, {0, kNone}, {0, kNone}, {200, kNone}}), TimesOf(kept));
    EXPECT_EQ(3u, ChaptersOfPart(all, {0, 300, 0}).size());
}

} // namespace
} // namespace records

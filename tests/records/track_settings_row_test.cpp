#include "records/track_settings_row.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using records::CTrackSettingsRow;

TrackSettings Record(INT32 index, BSTR language, BSTR name) {
    return {index, 0, 1, 1, language, name, 2};
}

WideStringView Text(BSTR text) {
    return {text, SysStringLen(text)};
}

TEST(TrackSettingsRowTest, Defaults) {
    const CTrackSettingsRow row(42);
    const TrackSettings& settings = row.Get();
    EXPECT_EQ(settings.index, 42);
    EXPECT_EQ(settings.bEnabled, 1);
    EXPECT_EQ(settings.bDefault, 0);
    EXPECT_EQ(settings.bReserved, 0);
    EXPECT_TRUE(Text(settings.language) == OLESTR("English"));
    ASSERT_NE(settings.name, nullptr);
    EXPECT_EQ(SysStringLen(settings.name), 0u);
    EXPECT_EQ(settings.trackType, -1);
}

TEST(TrackSettingsRowTest, CopiesAreDeepAndKeepEveryField) {
    const win::Bstr language(WideStringView(OLESTR("French")));
    const CTrackSettingsRow row(Record(3, language.Get(), nullptr));
    EXPECT_NE(row.Get().language, language.Get());
    EXPECT_TRUE(Text(row.Get().language) == OLESTR("French"));
    EXPECT_EQ(row.Get().name, nullptr);
    const CTrackSettingsRow copy(row);
    EXPECT_NE(copy.Get().language, row.Get().language);
    EXPECT_TRUE(Text(copy.Get().language) == OLESTR("French"));
    EXPECT_EQ(copy.Get().index, 3);
    EXPECT_EQ(copy.Get().bEnabled, 0);
    EXPECT_EQ(copy.Get().bDefault, 1);
    EXPECT_EQ(copy.Get().bReserved, 1);
    EXPECT_EQ(copy.Get().trackType, 2);
}

TEST(TrackSettingsRowTest, MovingAndAssigningKeepThePointersRight) {
    CTrackSettingsRow row(1);
    CTrackSettingsRow moved(std::move(row));
    EXPECT_TRUE(Text(moved.Get().language) == OLESTR("English"));
    const win::Bstr name(WideStringView(OLESTR("Commentary")));
    moved = CTrackSettingsRow(Record(9, nullptr, name.Get()));
    EXPECT_EQ(moved.Get().index, 9);
    EXPECT_EQ(moved.Get().language, nullptr);
    EXPECT_TRUE(Text(moved.Get().name) == OLESTR("Commentary"));
    const CTrackSettingsRow& self = moved;
    moved = self;
    EXPECT_TRUE(Text(moved.Get().name) == OLESTR("Commentary"));
}

TEST(TrackSettingsRowTest, CopyingToACallersRecordFreesItsOldStrings) {
    TrackSettings settings = Record(7, SysAllocString(OLESTR("Zuni")), SysAllocString(OLESTR("old")));
    const CTrackSettingsRow row(5);
    row.CopyTo(settings);
    EXPECT_EQ(settings.index, 5);
    EXPECT_TRUE(Text(settings.language) == OLESTR("English"));
    EXPECT_NE(settings.language, row.Get().language);
    SysFreeString(settings.language);
    SysFreeString(settings.name);
}

} // namespace

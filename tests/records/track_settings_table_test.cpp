#include "records/track_settings_table.h"

#include <gtest/gtest.h>

namespace {

using records::CTrackSettingsRow;
using records::CTrackSettingsTable;
using Replaced = CTrackSettingsTable::Replaced;

// The defaults of that row, switched off.
CTrackSettingsRow DisabledRow(INT32 index) {
    const CTrackSettingsRow defaults(index); // owns the strings
    TrackSettings settings = defaults.Get();
    settings.bEnabled = 0;
    return CTrackSettingsRow(settings);
}

TEST(TrackSettingsTableTest, BeginsWith100DefaultRows) {
    const CTrackSettingsTable table;
    const auto rows = table.All();
    ASSERT_EQ(rows.size(), 100u);
    for (INT32 i = 0; i < 100; ++i) {
        EXPECT_TRUE(rows[static_cast<size_t>(i)] == CTrackSettingsRow(i)) << i;
        EXPECT_TRUE(table.IsEnabled(i)) << i;
    }
}

TEST(TrackSettingsTableTest, PositionsOutsideHaveNoRowAndAreEnabled) {
    const CTrackSettingsTable table;
    for (const INT32 index : {-1, 100, 0x7fffffff}) {
        EXPECT_FALSE(table.Has(index)) << index;
        EXPECT_FALSE(table.At(index)) << index;
        EXPECT_TRUE(table.IsEnabled(index)) << index;
    }
}

TEST(TrackSettingsTableTest, ReplacingSaysWhetherTheRowChanged) {
    CTrackSettingsTable table;
    EXPECT_EQ(table.Replace(7, CTrackSettingsRow(7)), Replaced::SameAsBefore);
    EXPECT_EQ(table.Replace(7, DisabledRow(7)), Replaced::Changed);
    EXPECT_FALSE(table.IsEnabled(7));
    EXPECT_TRUE(table.IsEnabled(8));
    EXPECT_EQ(table.Replace(100, DisabledRow(100)), Replaced::OutsideTheTable);
    EXPECT_EQ(table.All().size(), 100u);
}

TEST(TrackSettingsTableTest, AppendedRowsStandWhereTheyWereAppendedWhateverTheirIndex) {
    CTrackSettingsTable table;
    table.Clear();
    EXPECT_TRUE(table.All().empty());
    table.Append(DisabledRow(9));
    ASSERT_TRUE(table.Has(0));
    EXPECT_EQ(table.At(0)->Get().index, 9);
    EXPECT_FALSE(table.IsEnabled(0));
    EXPECT_TRUE(table.IsEnabled(9));
}

} // namespace

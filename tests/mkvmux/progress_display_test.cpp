#include "mkvmux/progress_display.h"

#include <gtest/gtest.h>

namespace mkvmux {
namespace {

using Style = ProgressDisplay::Style;

std::string Shown(Style style, std::initializer_list<int> percentages, int columns = 80) {
    std::string text;
    ProgressDisplay display(style, columns, [&text](std::string_view piece) { text += piece; });
    for (const int percent : percentages) {
        display.Show(percent);
    }
    display.Finish();
    return text;
}

TEST(ProgressDisplay, LinesComeOnceForEachTenth) {
    EXPECT_EQ(Shown(Style::Lines, {0, 3, 9, 10, 11, 35, 35, 100}),
              "Progress: 0%\nProgress: 10%\nProgress: 30%\nProgress: 100%\n");
}

TEST(ProgressDisplay, WhatGoesBackIsNotShown) {
    EXPECT_EQ(Shown(Style::Lines, {50, 20, 60}), "Progress: 50%\nProgress: 60%\n");
}

TEST(ProgressDisplay, TheBarIsRedrawnAndLeftBehindOnItsOwnLine) {
    const std::string text = Shown(Style::Bar, {0, 50, 50, 100}, 18);
    EXPECT_EQ(text, "\r[>         ]   0%\r[=====>    ]  50%\r[==========] 100%\n");
}

TEST(ProgressDisplay, NothingIsShownWhenSwitchedOff) {
    EXPECT_EQ(Shown(Style::None, {0, 50, 100}), "");
    EXPECT_EQ(Shown(Style::Bar, {}), "");
}

TEST(ProgressDisplay, TheBarFitsEveryTerminal) {
    for (const int columns : {0, 1, 9, 20, 80, 500}) {
        for (const int percent : {0, 1, 99, 100}) {
            const std::string bar = ProgressBar(percent, columns);
            EXPECT_LE(bar.size(), static_cast<size_t>(std::max(columns, 9)) - (columns > 9 ? 1 : 0)) << columns;
        }
    }
}

TEST(ProgressDisplay, ValuesOutsideTheRangeAreClamped) {
    EXPECT_EQ(Shown(Style::Lines, {-5}), "Progress: 0%\n");
    EXPECT_EQ(Shown(Style::Lines, {500}), "Progress: 100%\n");
}

} // namespace
} // namespace mkvmux

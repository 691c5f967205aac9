#include "mkvmux/status_display.h"

#include <gtest/gtest.h>

namespace mkvmux {
namespace {

using Style = StatusDisplay::Style;

constexpr INT64 kSecond = 10'000'000;

class StatusDisplayTest : public ::testing::Test {
  protected:
    StatusDisplay Make(Style style) {
        return StatusDisplay(style, [this](std::string_view piece) { m_shown += piece; });
    }

    std::string m_shown;
};

TEST_F(StatusDisplayTest, OnATerminalTheLineIsRedrawnAndALongerOneBeforeItIsWipedAway) {
    StatusDisplay display = Make(Style::Redrawn);
    display.Show(0, "0 s, queued 12345");
    display.Show(kSecond / 5, "0 s, queued 1");
    display.Show(2 * kSecond / 5, "0 s, queued 12");
    display.Finish();
    display.Finish();
    EXPECT_EQ("\r0 s, queued 12345\r0 s, queued 1    \r0 s, queued 12\n", m_shown);
}

TEST_F(StatusDisplayTest, ElsewhereALineComesEachTenSecondsAndNoneOfAShortRun) {
    StatusDisplay display = Make(Style::Lines);
    for (INT64 tenths = 0; tenths <= 250; ++tenths) {
        display.Show(tenths * kSecond / 10, std::to_string(tenths));
    }
    display.Finish();
    EXPECT_EQ("100\n200\n", m_shown);
}

TEST_F(StatusDisplayTest, OneThatIsOffShowsNothingAndIsNeverDue) {
    StatusDisplay display = Make(Style::None);
    EXPECT_FALSE(display.IsOn());
    EXPECT_FALSE(display.IsDue(100 * kSecond));
    display.Show(100 * kSecond, "x");
    display.Finish();
    EXPECT_EQ("", m_shown);
}

TEST_F(StatusDisplayTest, AfterItsEndNothingIsShown) {
    StatusDisplay display = Make(Style::Redrawn);
    display.Finish();
    display.Show(kSecond, "x");
    EXPECT_EQ("", m_shown);
}

} // namespace
} // namespace mkvmux

#include "mkvmux/progress_display.h"

#include <algorithm>

namespace mkvmux {

namespace {

constexpr int kLineStepPercent = 10;
constexpr int kMaxBarCells = 50;
// "[", "]", " 100%" and the last column, which some terminals wrap after.
constexpr int kCellsAroundBar = 8;

} // namespace

std::string ProgressBar(int percent, int columns) {
    const int width = std::clamp(columns - kCellsAroundBar, 1, kMaxBarCells);
    const int filled = width * percent / kWholePercent;
    std::string cells(static_cast<size_t>(filled), '=');
    if (filled < width) {
        cells += '>';
    }
    cells.resize(static_cast<size_t>(width), ' ');
    std::string number = std::to_string(percent);
    number.insert(0, number.size() < 3 ? 3 - number.size() : 0, ' ');
    return "[" + cells + "] " + number + "%";
}

ProgressDisplay::ProgressDisplay(Style style, int columns, Output output)
    : m_style(style), m_columns(columns), m_output(std::move(output)) {}

void ProgressDisplay::Show(int percent) {
    percent = std::clamp(percent, 0, kWholePercent);
    if (m_style == Style::Lines) {
        percent -= percent % kLineStepPercent;
    }
    if (m_style == Style::None || percent <= m_shownPercent) {
        return;
    }
    m_shownPercent = percent;
    m_style == Style::Bar ? ShowBar() : ShowLine();
}

void ProgressDisplay::ShowBar() {
    m_output("\r" + ProgressBar(m_shownPercent, m_columns));
}

void ProgressDisplay::ShowLine() {
    m_output("Progress: " + std::to_string(m_shownPercent) + "%\n");
}

void ProgressDisplay::Finish() {
    if (m_style == Style::Bar && m_shownPercent >= 0) {
        m_output("\n");
        m_style = Style::None;
    }
}

} // namespace mkvmux

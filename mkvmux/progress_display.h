// ProgressDisplay: how far the run is: a bar that is redrawn on a terminal, a line of plain text each tenth
// elsewhere.
//
// Units: percent, 0 to 100. Threads: one.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace mkvmux {

inline constexpr int kWholePercent = 100;

class ProgressDisplay {
  public:
    enum class Style { None, Bar, Lines };
    using Output = std::function<void(std::string_view)>;

    ProgressDisplay(Style style, int columns, Output output);

    // Prints only what is new; a percentage that went back is not shown.
    void Show(int percent);
    // Leaves the redrawn line, so that what follows begins on its own.
    void Finish();

  private:
    void ShowBar();
    void ShowLine();

    Style m_style;
    int m_columns;
    Output m_output;
    int m_shownPercent = -1;
};

// The bar at this percentage, no wider than the columns given: "[=====>    ]  50%".
[[nodiscard]] std::string ProgressBar(int percent, int columns);

} // namespace mkvmux

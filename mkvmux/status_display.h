// StatusDisplay: a line about the run that is redrawn on a terminal, and one now and then elsewhere.
//
// Units: times in 100 ns. Threads: one.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "win/platform.h"

namespace mkvmux {

class StatusDisplay {
  public:
    enum class Style { None, Redrawn, Lines };
    using Output = std::function<void(std::string_view)>;

    // Between two lines that stay.
    static constexpr INT64 kLineInterval = 100'000'000;

    StatusDisplay(Style style, Output output) : m_style(style), m_output(std::move(output)) {}

    [[nodiscard]] bool IsOn() const { return m_style != Style::None; }
    // Whether a line would be shown at that time of the run; making one costs something.
    [[nodiscard]] bool IsDue(INT64 elapsed) const;
    void Show(INT64 elapsed, const std::string& line);
    // Leaves the redrawn line, so that what follows begins on its own.
    void Finish();

  private:
    Style m_style;
    Output m_output;
    INT64 m_lastLine = 0;
    size_t m_shownChars = 0;
};

} // namespace mkvmux

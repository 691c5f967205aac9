#include "mkvmux/status_display.h"

#include <algorithm>

namespace mkvmux {

bool StatusDisplay::IsDue(INT64 elapsed) const {
    return m_style == Style::Redrawn || (m_style == Style::Lines && elapsed >= m_lastLine + kLineInterval);
}

void StatusDisplay::Show(INT64 elapsed, const std::string& line) {
    if (!IsDue(elapsed)) {
        return;
    }
    m_lastLine = elapsed;
    if (m_style == Style::Lines) {
        m_output(line + "\n");
        return;
    }
    const size_t left = m_shownChars - std::min(m_shownChars, line.size()); // of a longer one before
    m_shownChars = line.size();
    m_output("\r" + line + std::string(left, ' '));
}

void StatusDisplay::Finish() {
    if (m_style == Style::Redrawn && m_shownChars > 0) {
        m_output("\n");
    }
    m_style = Style::None;
}

} // namespace mkvmux

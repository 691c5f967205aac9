// Picture: the pixels of a window's client area, as it is on the screen or as it prints itself.
//
// Units: pixels of that client area. Owner: itself. Threads: the window's. Errors: a picture that cannot be taken fails
// the running test.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "win/platform.h"

namespace ui_test {

class Picture {
  public:
    static Picture OfScreen(HWND window);
    // As the window prints itself, and as it paints into a device context that is handed to it.
    static Picture OfPrint(HWND window);
    static Picture OfPaint(HWND window);
    // A text alone on the colour of windows, in the window's font.
    static Picture OfText(HWND window, const std::wstring& text);

    // The colours of a part, row by row.
    [[nodiscard]] std::vector<COLORREF> Part(const RECT& area) const;
    [[nodiscard]] RECT Whole() const { return {0, 0, m_width, m_height}; }
    // What is drawn in a part, on the colour of windows; none when nothing is.
    [[nodiscard]] std::optional<RECT> Ink(const RECT& area) const;

  private:
    using Draw = std::function<void(HDC to, const RECT& client)>;
    Picture(HWND window, const Draw& draw);

    int m_width = 0;
    int m_height = 0;
    std::vector<COLORREF> m_pixels;
};

} // namespace ui_test

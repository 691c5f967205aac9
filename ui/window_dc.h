// CWindowDc: a window's device context with a font selected, for the life of the object.
//
// Units: pixels. Owner: itself; the font stays its owner's. Threads: the window's.
// Errors: a window that is gone measures as nothing and draws nothing.
#pragma once

#include <string>

#include "win/platform.h"

class CWindowDc {
  public:
    CWindowDc(HWND window, HFONT font) : m_window(window), m_dc(GetDC(window)) {
        m_previousFont = font != nullptr ? SelectObject(m_dc, font) : nullptr;
    }
    ~CWindowDc() {
        if (m_previousFont != nullptr) {
            SelectObject(m_dc, m_previousFont);
        }
        ReleaseDC(m_window, m_dc);
    }
    CWindowDc(const CWindowDc&) = delete;
    CWindowDc& operator=(const CWindowDc&) = delete;

    [[nodiscard]] HDC Get() const { return m_dc; }
    [[nodiscard]] SIZE Measure(const std::wstring& text) const {
        SIZE size{};
        GetTextExtentPoint32W(m_dc, text.c_str(), static_cast<int>(text.size()), &size);
        return size;
    }
    // A length that is meant for 96 dots per inch, on this screen.
    [[nodiscard]] int Scale(int pixelsAt96) const { return MulDiv(pixelsAt96, GetDeviceCaps(m_dc, LOGPIXELSY), 96); }

  private:
    HWND m_window;
    HDC m_dc;
    HGDIOBJ m_previousFont = nullptr;
};

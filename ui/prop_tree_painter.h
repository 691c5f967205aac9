// CPropTreePainter: paints values into the "Value" column of a property tree, for as long as one painting lasts.
//
// Units: pixels of the tree's client area. Owner: itself; the device context is as it was when the painter is gone.
// Threads: the tree's.
#pragma once

#include "ui/prop_tree_item.h"
#include "ui/window_dc.h"
#include "win/platform.h"

class CPropTreePainter {
  public:
    // Into the caller's device context, when it has given one, or onto the screen.
    CPropTreePainter(HWND tree, HFONT font, HDC given);
    ~CPropTreePainter() { RestoreDC(m_dc, m_state); }
    CPropTreePainter(const CPropTreePainter&) = delete;
    CPropTreePainter& operator=(const CPropTreePainter&) = delete;

    // Whether anything of the cell can be seen.
    [[nodiscard]] bool Shows(const RECT& cell) const { return cell.top < m_client.bottom; }
    // Nothing for a label.
    void Paint(const PropTreeItem& item, const RECT& cell) const;

  private:
    const CWindowDc m_screen;
    const HDC m_dc;
    const int m_state;
    RECT m_client{};
};

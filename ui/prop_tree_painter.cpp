#include "ui/prop_tree_painter.h"

namespace {

constexpr int kValueIndentAt96 = 4;

} // namespace

CPropTreePainter::CPropTreePainter(HWND tree, HFONT font, HDC given)
    : m_screen(tree, nullptr), m_dc(given != nullptr ? given : m_screen.Get()), m_state(SaveDC(m_dc)) {
    GetClientRect(tree, &m_client);
    SelectObject(m_dc, font);
    SetBkMode(m_dc, TRANSPARENT);
    SetTextColor(m_dc, GetSysColor(COLOR_WINDOWTEXT));
}

void CPropTreePainter::Paint(const PropTreeItem& item, const RECT& cell) const {
    if (item.kind == PropItemKind::Label) {
        return;
    }
    FillRect(m_dc, &cell, GetSysColorBrush(COLOR_WINDOW)); // a long label ends here
    TEXTMETRICW metrics{};
    GetTextMetricsW(m_dc, &metrics);
    RECT text = cell;
    text.left += m_screen.Scale(kValueIndentAt96);
    // In the middle of the row, with an odd pixel below as the tree's own labels have it: on one line with them. In the
    // row's whole height the system would round by where on the screen the row is.
    text.top += (cell.bottom - cell.top - metrics.tmHeight) / 2;
    text.bottom = text.top + metrics.tmHeight;
    const std::wstring& value = ShownValueOf(item);
    DrawTextW(m_dc, value.c_str(), static_cast<int>(value.size()), &text,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

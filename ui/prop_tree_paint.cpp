// The painted value column of CPropTree.
#include "ui/prop_tree.h"
#include "ui/window_dc.h"

namespace {

constexpr int kValueIndentAt96 = 4;

} // namespace

// Into the caller's device context, when it has given one, or onto the screen.
void CPropTree::PaintValues(HDC given) const {
    RECT client{};
    GetClientRect(m_tree, &client);
    const WindowDc screen(m_tree, nullptr);
    const HDC dc = given != nullptr ? given : screen.Get();
    const int state = SaveDC(dc);
    SelectObject(dc, Font());
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(COLOR_WINDOWTEXT));
    RECT cell{};
    for (HTREEITEM item = Neighbour(TVGN_FIRSTVISIBLE, nullptr);
         item != nullptr && ValueCell(item, cell) && cell.top < client.bottom;
         item = Neighbour(TVGN_NEXTVISIBLE, item)) {
        PaintValue(dc, item, cell);
    }
    RestoreDC(dc, state);
}

void CPropTree::PaintValue(HDC dc, HTREEITEM item, const RECT& cell) const {
    const PropTreeItem* const record = GetItem(item);
    if (record == nullptr || record->kind == PropItemKind::Label) {
        return;
    }
    FillRect(dc, &cell, GetSysColorBrush(COLOR_WINDOW)); // a long label ends here
    TEXTMETRICW metrics{};
    GetTextMetricsW(dc, &metrics);
    RECT text = cell;
    text.left += WindowDc(m_tree, nullptr).Scale(kValueIndentAt96);
    // In the middle of the row, with an odd pixel below as the tree's own labels have it: on one line with them. In the
    // row's whole height the system would round by where on the screen the row is.
    text.top += (cell.bottom - cell.top - metrics.tmHeight) / 2;
    text.bottom = text.top + metrics.tmHeight;
    const std::wstring& value = ShownValueOf(*record);
    DrawTextW(dc, value.c_str(), static_cast<int>(value.size()), &text,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

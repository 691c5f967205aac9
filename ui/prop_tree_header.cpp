#include "ui/prop_tree_header.h"

#include <algorithm>

#include <commctrl.h>

#include "ui/window_dc.h"

namespace {

constexpr int kHeaderHeightAt96 = 20;
constexpr int kMinColumnWidthAt96 = 24;

constexpr DWORD kHeaderStyle = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_CLIPSIBLINGS | HDS_BUTTONS;

void InsertColumn(HWND header, int index, const WCHAR* title, int width) {
    HDITEMW column{};
    column.mask = HDI_TEXT | HDI_FORMAT | HDI_WIDTH;
    column.fmt = HDF_LEFT | HDF_STRING;
    column.pszText = const_cast<WCHAR*>(title);
    column.cxy = width;
    SendMessageW(header, HDM_INSERTITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
}

int HeightOf(HWND header) {
    return CWindowDc(header, nullptr).Scale(kHeaderHeightAt96);
}

} // namespace

CPropTreeHeader::~CPropTreeHeader() {
    if (const HWND window = Window()) {
        DestroyWindow(window);
    }
}

bool CPropTreeHeader::Create(HWND parent, const RECT& area) {
    const int width = area.right - area.left;
    const HWND header = CreateWindowExW(0, WC_HEADERW, nullptr, kHeaderStyle, area.left, area.top, width, 0, parent,
                                        nullptr, nullptr, nullptr);
    if (header == nullptr) {
        return false;
    }
    SendMessageW(header, WM_SETFONT, static_cast<WPARAM>(SendMessageW(parent, WM_GETFONT, 0, 0)), FALSE);
    SetWindowPos(header, nullptr, 0, 0, width, HeightOf(header), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    m_nameWidth = width / 2;
    InsertColumn(header, 0, L"Name", m_nameWidth);
    InsertColumn(header, 1, L"Value", width / 2);
    m_hook.Set<&CPropTreeHeader::m_hook, &CPropTreeHeader::OnMessage, &CPropTreeHeader::OnDestroyed>(header, *this);
    return true;
}

int CPropTreeHeader::Height() const {
    return HeightOf(Window());
}

int CPropTreeHeader::Width() const {
    RECT window{};
    GetWindowRect(Window(), &window);
    return window.right - window.left;
}

bool CPropTreeHeader::ValueColumn(RECT& column) const {
    return m_hook.Ask(HDM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&column)) != FALSE;
}

void CPropTreeHeader::Resize(const RECT& area) {
    const int before = Width();
    const int width = area.right - area.left;
    const int nameWidth = before > 0 ? MulDiv(m_nameWidth, width, before) : width / 2;
    MoveWindow(Window(), area.left, area.top, width, Height(), TRUE); // which fits the columns in as they are
    SetNameWidth(nameWidth);
}

// The value column takes what the name column leaves.
void CPropTreeHeader::SetNameWidth(int width) {
    const int whole = Width();
    const int least = std::min(whole / 2, CWindowDc(Window(), nullptr).Scale(kMinColumnWidthAt96));
    m_nameWidth = std::clamp(width, least, whole - least);
    HDITEMW column{};
    column.mask = HDI_WIDTH;
    column.cxy = m_nameWidth;
    m_hook.Ask(HDM_SETITEMW, 0, reinterpret_cast<LPARAM>(&column));
    column.cxy = whole - m_nameWidth;
    m_hook.Ask(HDM_SETITEMW, 1, reinterpret_cast<LPARAM>(&column));
    m_onWidths();
}

LRESULT CPropTreeHeader::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = m_hook.Ask(message, wParam, lParam);
    if (CWindowHook::IsOf(window, this)) {
        FollowDivider();
    }
    return result;
}

// The header tells its parent alone when the user drags a divider; the values follow the width that came of it.
void CPropTreeHeader::FollowDivider() {
    HDITEMW column{};
    column.mask = HDI_WIDTH;
    m_hook.Ask(HDM_GETITEMW, 0, reinterpret_cast<LPARAM>(&column));
    const int nameWidth = column.cxy;
    m_hook.Ask(HDM_GETITEMW, 1, reinterpret_cast<LPARAM>(&column));
    if (nameWidth != m_nameWidth || nameWidth + column.cxy != Width()) {
        SetNameWidth(nameWidth);
    }
}

// The windows of CPropTree: its procedures, what accessibility is told, and the editor that follows the selection.
#include <cstring>

#include "dshow/com_guard.h"
#include "ui/prop_tree.h"
#include "ui/prop_tree_accessible.h"
#include "win/message_value.h"

namespace {

CPropTree* TreeBehind(HWND window) {
    return win::FromMessageValue<CPropTree*>(GetWindowLongPtrW(window, GWLP_USERDATA));
}

// The window goes: from here on its messages are for its own procedure alone.
void Unhook(HWND window, WNDPROC previous) {
    SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
}

// Forward to the editor; backwards the dialog leads.
bool IsTabToEditor(LPARAM dialogMessage) {
    const auto* const message = win::FromMessageValue<const MSG*>(dialogMessage);
    return message != nullptr && message->message == WM_KEYDOWN && message->wParam == VK_TAB &&
           GetKeyState(VK_SHIFT) >= 0;
}

} // namespace

LRESULT CPropTree::Ask(UINT message, WPARAM wParam, LPARAM lParam) const {
    return m_tree != nullptr ? CallWindowProcW(m_previousProc, m_tree, message, wParam, lParam) : 0;
}

LRESULT CPropTree::AskHeader(UINT message, WPARAM wParam, LPARAM lParam) const {
    return m_header != nullptr ? CallWindowProcW(m_previousHeaderProc, m_header, message, wParam, lParam) : 0;
}

LRESULT CALLBACK CPropTree::TreeProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    CPropTree* const tree = TreeBehind(hwnd);
    if (tree == nullptr) {
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
    const WNDPROC previous = tree->m_previousProc;
    if (message == WM_DESTROY) {
        Unhook(hwnd, previous);
        tree->m_editor.Close(); // an edit that is still open is given up
        tree->m_editedItem = nullptr;
        tree->m_tree = nullptr;
    }
    if (message == WM_COMMAND && lParam != 0 && win::FromMessageValue<HWND>(lParam) == tree->m_editor.Window()) {
        return 0; // the tree's procedure would take our editor for the one that it renames labels with
    }
    if (message == WM_GETOBJECT && static_cast<LONG>(lParam) == OBJID_CLIENT) {
        if (const LRESULT object = AccessibleTree(hwnd, wParam)) {
            return object;
        }
    }
    if (message == kNameOfAccessibleChild) {
        return tree->TellAccessibleName(wParam, lParam);
    }
    // Before the tree moves a row that is in sight only in part under the mouse away.
    const HTREEITEM clicked = message == WM_LBUTTONDOWN ? tree->ItemOfValueAt(lParam) : nullptr;
    LRESULT result = CallWindowProcW(previous, hwnd, message, wParam, lParam);
    if (TreeBehind(hwnd) != tree) {
        return result; // gone meanwhile
    }
    if (message == WM_GETDLGCODE && tree->m_editor.IsOpen() && IsTabToEditor(lParam)) {
        result |= DLGC_WANTTAB;
    }
    static_cast<void>(ComGuard([&] {
        tree->OnTreeMessage(message, wParam, clicked);
        return S_OK;
    }));
    return result;
}

void CPropTree::OnTreeMessage(UINT message, WPARAM wParam, HTREEITEM clicked) {
    const HWND tree = m_tree;
    PlaceEditor(); // whatever scrolled, opened or closed a branch
    if (message == WM_PAINT || message == WM_PRINTCLIENT) {
        PaintValues(win::FromMessageValue<HDC>(static_cast<LONG_PTR>(wParam)));
    }
    FollowSelection();
    if (TreeBehind(tree) != this) {
        return;
    }
    const bool isForEditor = message == WM_LBUTTONDOWN ? clicked != nullptr && clicked == m_editedItem
                                                       : message == WM_KEYDOWN && (wParam == VK_F2 || wParam == VK_TAB);
    if (isForEditor && m_editor.IsOpen()) {
        SetFocus(m_editor.Window());
    }
}

LRESULT CALLBACK CPropTree::HeaderProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    CPropTree* const tree = TreeBehind(hwnd);
    if (tree == nullptr) {
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
    const WNDPROC previous = tree->m_previousHeaderProc;
    if (message == WM_DESTROY) {
        Unhook(hwnd, previous);
        tree->m_header = nullptr;
    }
    const LRESULT result = CallWindowProcW(previous, hwnd, message, wParam, lParam);
    if (TreeBehind(hwnd) == tree) {
        tree->OnHeaderMessage();
    }
    return result;
}

// The header tells its parent alone when the user drags a divider; the values follow the width that came of it.
void CPropTree::OnHeaderMessage() {
    HDITEMW column{};
    column.mask = HDI_WIDTH;
    AskHeader(HDM_GETITEMW, 0, reinterpret_cast<LPARAM>(&column));
    const int nameWidth = column.cxy;
    AskHeader(HDM_GETITEMW, 1, reinterpret_cast<LPARAM>(&column));
    RECT window{};
    GetWindowRect(m_header, &window);
    if (m_tree != nullptr && (nameWidth != m_nameWidth || nameWidth + column.cxy != window.right - window.left)) {
        SetNameWidth(nameWidth);
    }
}

bool CPropTree::ValueCell(HTREEITEM item, RECT& cell) const {
    RECT row{};
    std::memcpy(&row, &item, sizeof(item)); // NOLINT(bugprone-sizeof-expression): TVM_GETITEMRECT reads it there
    RECT column{};
    RECT client{};
    if (Ask(TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&row)) == FALSE ||
        AskHeader(HDM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&column)) == FALSE || !GetClientRect(m_tree, &client)) {
        return false;
    }
    // The header is wider than the rows by the scroll bar.
    cell = {column.left, row.top, column.right < client.right ? column.right : client.right, row.bottom};
    return true;
}

LRESULT CPropTree::TellAccessibleName(WPARAM child, LPARAM text) const {
    return SUCCEEDED(ComGuard([&] {
        const auto name = AccessibleName(child);
        if (!name) {
            return E_INVALIDARG;
        }
        *win::FromMessageValue<std::wstring*>(text) = *name;
        return S_OK;
    }));
}

// Trees of the newer common controls number their items; the older ones give the handle, of which 32 bits travel.
WPARAM CPropTree::AccessibleNumber(HTREEITEM item) const {
    const auto number = static_cast<UINT>(Ask(TVM_MAPHTREEITEMTOACCID, reinterpret_cast<WPARAM>(item), 0));
    return number != 0 ? number : static_cast<UINT>(reinterpret_cast<UINT_PTR>(item));
}

std::optional<std::wstring> CPropTree::AccessibleName(WPARAM child) const {
    for (const auto& [item, record] : m_items) {
        if (AccessibleNumber(item) == static_cast<UINT>(child)) {
            return record.kind == PropItemKind::Label ? record.label : record.label + L": " + ShownValueOf(record);
        }
    }
    return {};
}

void CPropTree::FollowSelection() {
    const HTREEITEM selected = Neighbour(TVGN_CARET, nullptr);
    const HTREEITEM left = m_editedItem;
    if (selected == left) {
        return;
    }
    // First of all: closing and storing send messages that come back here.
    m_editedItem = selected;
    const HWND tree = m_tree;
    StoreEdit(left);
    if (TreeBehind(tree) == this && m_editedItem == selected) {
        OpenEditor(selected);
        InvalidateRect(m_tree, nullptr, FALSE);
    }
}

// Takes the open edit over into the item, closes the editor, and tells the parent of a change.
void CPropTree::StoreEdit(HTREEITEM item) {
    const auto text = m_editor.EditedText();
    const bool wasOpen = m_editor.IsOpen();
    m_editor.Close();
    const auto record = m_items.find(item);
    if (!wasOpen || !text || record == m_items.end() || !StoreText(record->second, *text)) {
        return;
    }
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, m_tree, OBJID_CLIENT, static_cast<LONG>(AccessibleNumber(item)));
    NMHDR changed{};
    changed.hwndFrom = m_tree; // code 0, and no control identifier
    SendMessageW(GetParent(m_tree), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&changed));
}

void CPropTree::OpenEditor(HTREEITEM item) {
    if (const PropTreeItem* const record = GetItem(item)) {
        m_editor.Open(m_tree, Font(), *record);
        PlaceEditor();
    }
}

void CPropTree::PlaceEditor() {
    if (!m_editor.IsOpen()) {
        return;
    }
    RECT cell{};
    if (ValueCell(m_editedItem, cell)) {
        m_editor.Place(cell);
    }
}

HTREEITEM CPropTree::ItemOfValueAt(LPARAM position) const {
    TVHITTESTINFO hit{};
    hit.pt = {static_cast<SHORT>(LOWORD(position)), static_cast<SHORT>(HIWORD(position))};
    const auto item = win::FromMessageValue<HTREEITEM>(Ask(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
    RECT cell{};
    return item != nullptr && ValueCell(item, cell) && hit.pt.x >= cell.left ? item : nullptr;
}

void CPropTree::OnEditorKey(PropTreeEditorKey key) {
    const HWND tree = m_tree;
    switch (key) {
    case PropTreeEditorKey::TakeOver:
        StoreEdit(m_editedItem);
        if (TreeBehind(tree) == this) {
            OpenEditor(m_editedItem);
        }
        SetFocus(tree);
        break;
    case PropTreeEditorKey::GiveUp:
        if (const PropTreeItem* const record = GetItem(m_editedItem)) {
            m_editor.Show(*record);
        }
        SetFocus(tree);
        break;
    case PropTreeEditorKey::NextItem:
    case PropTreeEditorKey::PreviousItem:
        SelectNeighbour(key == PropTreeEditorKey::NextItem ? TVGN_NEXTVISIBLE : TVGN_PREVIOUSVISIBLE);
        break;
    case PropTreeEditorKey::NextControl:
        LeaveForNextControl();
        break;
    case PropTreeEditorKey::PreviousControl:
        SetFocus(tree);
        break;
    }
}

void CPropTree::SelectNeighbour(UINT relation) const {
    const HWND tree = m_tree;
    const HTREEITEM item = Neighbour(relation, m_editedItem);
    if (item == nullptr) {
        return;
    }
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    if (TreeBehind(tree) == this) {
        SetFocus(m_editor.IsOpen() ? m_editor.Window() : tree);
    }
}

void CPropTree::LeaveForNextControl() const {
    const HWND dialog = GetAncestor(m_tree, GA_ROOT);
    const HWND editor = m_editor.Window();
    const HWND next = GetNextDlgTabItem(dialog, m_tree, FALSE);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    if (GetFocus() == editor) {
        SetFocus(next); // the host is no dialog
    }
}

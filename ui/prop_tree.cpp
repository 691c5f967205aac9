#include "ui/prop_tree.h"

#include <algorithm>

#include "dshow/com_guard.h"
#include "ui/prop_tree_accessible.h"
#include "ui/prop_tree_painter.h"
#include "ui/window_dc.h"
#include "win/message_value.h"

namespace {

constexpr int kRowPaddingAt96 = 6;         // pixels of a row that are not text
constexpr int kIndentAt96 = 19;            // of a row below its group: what the system takes on a usual screen
constexpr const WCHAR* kTallText = L"Ggi"; // an ascender, a descender and a dot

// Without TVS_NONEVENHEIGHT the tree would take a pixel off an odd row.
constexpr DWORD kTreeStyle = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_CLIPSIBLINGS | WS_TABSTOP | WS_CLIPCHILDREN |
                             TVS_HASBUTTONS | TVS_LINESATROOT | TVS_SHOWSELALWAYS | TVS_FULLROWSELECT |
                             TVS_NONEVENHEIGHT;

const std::wstring kTrue = L"True";
const std::wstring kFalse = L"False";

// Forward to the editor; backwards the dialog leads.
bool IsTabToEditor(LPARAM dialogMessage) {
    const auto* const message = win::FromMessageValue<const MSG*>(dialogMessage);
    return message != nullptr && message->message == WM_KEYDOWN && message->wParam == VK_TAB &&
           GetKeyState(VK_SHIFT) >= 0;
}

} // namespace

CPropTree::CPropTree()
    : m_header([this] { OnColumnWidths(); }), m_editor([this](PropTreeEditorKey key) { OnEditorKey(key); }) {}

CPropTree::~CPropTree() {
    if (const HWND tree = TreeWindow()) {
        DestroyWindow(tree);
    }
}

bool CPropTree::Create(HWND parent, const RECT& area) {
    const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    return TreeWindow() == nullptr && m_header.Create(parent, area) && CreateTree(parent, area);
}

bool CPropTree::CreateTree(HWND parent, const RECT& area) {
    const int top = area.top + m_header.Height();
    const HWND tree =
        CreateWindowExW(0, WC_TREEVIEWW, nullptr, kTreeStyle, area.left, top, area.right - area.left,
                        std::max(0, static_cast<int>(area.bottom) - top), parent, nullptr, nullptr, nullptr);
    if (tree == nullptr) {
        return false;
    }
    SendMessageW(tree, WM_SETFONT, static_cast<WPARAM>(SendMessageW(parent, WM_GETFONT, 0, 0)), FALSE);
    m_tree.Set<&CPropTree::m_tree, &CPropTree::OnMessage, &CPropTree::OnTreeDestroyed>(tree, *this);
    SetRowGeometry();
    return true;
}

// What is no text grows with the resolution as the text and the header do.
void CPropTree::SetRowGeometry() const {
    const CWindowDc dc(TreeWindow(), Font());
    m_tree.Ask(TVM_SETITEMHEIGHT, static_cast<WPARAM>(dc.Measure(kTallText).cy + dc.Scale(kRowPaddingAt96)), 0);
    m_tree.Ask(TVM_SETINDENT, static_cast<WPARAM>(dc.Scale(kIndentAt96)), 0);
}

HFONT CPropTree::Font() const {
    return win::FromMessageValue<HFONT>(SendMessageW(GetParent(TreeWindow()), WM_GETFONT, 0, 0));
}

void CPropTree::Resize(const RECT& area) {
    if (TreeWindow() == nullptr || HeaderWindow() == nullptr) {
        return;
    }
    const int top = area.top + m_header.Height();
    MoveWindow(TreeWindow(), area.left, top, area.right - area.left, std::max(0, static_cast<int>(area.bottom) - top),
               TRUE);
    m_header.Resize(area);
}

void CPropTree::OnColumnWidths() {
    if (TreeWindow() != nullptr) {
        InvalidateRect(TreeWindow(), nullptr, TRUE);
        PlaceEditor();
    }
}

HTREEITEM CPropTree::AddLabel(HTREEITEM parent, const std::wstring& label) {
    PropTreeItem item;
    item.parent = parent;
    item.label = label;
    return m_rows.Add(std::move(item));
}

HTREEITEM CPropTree::AddBool(HTREEITEM parent, const std::wstring& label, bool value) {
    return AddList(parent, label, {kTrue, kFalse}, value ? 0 : 1);
}

HTREEITEM CPropTree::AddList(HTREEITEM parent, const std::wstring& label, const std::vector<std::wstring>& choices,
                             UINT32 selection) {
    PropTreeItem item;
    item.kind = PropItemKind::List;
    item.parent = parent;
    item.label = label;
    item.choices = choices;
    item.selection = selection;
    return m_rows.Add(std::move(item));
}

HTREEITEM CPropTree::AddText(HTREEITEM parent, const std::wstring& label, const std::wstring& text) {
    PropTreeItem item;
    item.kind = PropItemKind::Text;
    item.parent = parent;
    item.label = label;
    item.text = text;
    return m_rows.Add(std::move(item));
}

HTREEITEM CPropTree::GetFirstChild(HTREEITEM item) const {
    return m_rows.Neighbour(TVGN_CHILD, item);
}

HTREEITEM CPropTree::GetNextSibling(HTREEITEM item) const {
    return m_rows.Neighbour(TVGN_NEXT, item);
}

bool CPropTree::GetBool(const PropTreeItem& item) {
    return item.selection < item.choices.size() && item.choices[item.selection] == kTrue;
}

const std::wstring& CPropTree::GetSelectedText(const PropTreeItem& item) {
    static const std::wstring kNothing;
    if (item.choices.empty()) {
        return kNothing;
    }
    return item.choices[item.selection < item.choices.size() ? item.selection : 0];
}

LRESULT CPropTree::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_COMMAND && lParam != 0 && win::FromMessageValue<HWND>(lParam) == m_editor.Window()) {
        return 0; // the tree's procedure would take our editor for the one that it renames labels with
    }
    if (message == WM_GETOBJECT && static_cast<LONG>(lParam) == OBJID_CLIENT) {
        if (const LRESULT object = AccessibleTree(window, wParam)) {
            return object;
        }
    }
    if (message == kNameOfAccessibleChild) {
        return TellAccessibleName(wParam, lParam);
    }
    // Before the tree moves a row that is in sight only in part under the mouse away.
    const HTREEITEM clicked = message == WM_LBUTTONDOWN ? ItemOfValueAt(lParam) : nullptr;
    LRESULT result = m_tree.Ask(message, wParam, lParam);
    if (!CWindowHook::IsOf(window, this)) {
        return result; // gone meanwhile
    }
    if (message == WM_GETDLGCODE && m_editor.IsOpen() && IsTabToEditor(lParam)) {
        result |= DLGC_WANTTAB;
    }
    (void)ComGuard([&] {
        AfterMessage(message, wParam, clicked);
        return S_OK;
    });
    return result;
}

// An edit that is still open is given up.
void CPropTree::OnTreeDestroyed() {
    m_editor.Close();
    m_editedItem = nullptr;
}

void CPropTree::AfterMessage(UINT message, WPARAM wParam, HTREEITEM clicked) {
    const HWND tree = TreeWindow();
    PlaceEditor(); // whatever scrolled, opened or closed a branch
    if (message == WM_PAINT || message == WM_PRINTCLIENT) {
        PaintValues(win::FromMessageValue<HDC>(static_cast<LONG_PTR>(wParam)));
    }
    FollowSelection();
    if (!CWindowHook::IsOf(tree, this)) {
        return;
    }
    const bool isForEditor = message == WM_LBUTTONDOWN ? clicked != nullptr && clicked == m_editedItem
                                                       : message == WM_KEYDOWN && (wParam == VK_F2 || wParam == VK_TAB);
    if (isForEditor && m_editor.IsOpen()) {
        SetFocus(m_editor.Window());
    }
}

void CPropTree::PaintValues(HDC given) const {
    const CPropTreePainter painter(TreeWindow(), Font(), given);
    RECT cell{};
    for (HTREEITEM item = m_rows.Neighbour(TVGN_FIRSTVISIBLE, nullptr);
         item != nullptr && ValueCell(item, cell) && painter.Shows(cell);
         item = m_rows.Neighbour(TVGN_NEXTVISIBLE, item)) {
        if (const PropTreeItem* const record = m_rows.Find(item)) {
            painter.Paint(*record, cell);
        }
    }
}

bool CPropTree::ValueCell(HTREEITEM item, RECT& cell) const {
    RECT row{};
    RECT column{};
    RECT client{};
    if (!m_rows.Rectangle(item, row) || !m_header.ValueColumn(column) || !GetClientRect(TreeWindow(), &client)) {
        return false;
    }
    // The header is wider than the rows by the scroll bar.
    cell = {column.left, row.top, column.right < client.right ? column.right : client.right, row.bottom};
    return true;
}

LRESULT CPropTree::TellAccessibleName(WPARAM child, LPARAM text) const {
    return SUCCEEDED(ComGuard([&] {
        const auto name = m_rows.AccessibleName(child);
        if (!name) {
            return E_INVALIDARG;
        }
        *win::FromMessageValue<std::wstring*>(text) = *name;
        return S_OK;
    }));
}

void CPropTree::FollowSelection() {
    const HTREEITEM selected = m_rows.Neighbour(TVGN_CARET, nullptr);
    const HTREEITEM left = m_editedItem;
    if (selected == left) {
        return;
    }
    // First of all: closing and storing send messages that come back here.
    m_editedItem = selected;
    const HWND tree = TreeWindow();
    StoreEdit(left);
    if (CWindowHook::IsOf(tree, this) && m_editedItem == selected) {
        OpenEditor(selected);
        InvalidateRect(TreeWindow(), nullptr, FALSE);
    }
}

// Takes the open edit over into the item, closes the editor, and tells the parent of a change.
void CPropTree::StoreEdit(HTREEITEM item) {
    const auto text = m_editor.EditedText();
    const bool wasOpen = m_editor.IsOpen();
    m_editor.Close();
    if (!wasOpen || !text || !m_rows.Store(item, *text)) {
        return;
    }
    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, TreeWindow(), OBJID_CLIENT,
                   static_cast<LONG>(m_rows.AccessibleNumber(item)));
    NMHDR changed{};
    changed.hwndFrom = TreeWindow(); // code 0, and no control identifier
    SendMessageW(GetParent(TreeWindow()), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&changed));
}

void CPropTree::OpenEditor(HTREEITEM item) {
    if (const PropTreeItem* const record = m_rows.Find(item)) {
        m_editor.Open(TreeWindow(), Font(), *record);
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
    const POINT point{static_cast<SHORT>(LOWORD(position)), static_cast<SHORT>(HIWORD(position))};
    const HTREEITEM item = m_rows.At(point);
    RECT cell{};
    return item != nullptr && ValueCell(item, cell) && point.x >= cell.left ? item : nullptr;
}

void CPropTree::OnEditorKey(PropTreeEditorKey key) {
    const HWND tree = TreeWindow();
    switch (key) {
    case PropTreeEditorKey::TakeOver:
        StoreEdit(m_editedItem);
        if (CWindowHook::IsOf(tree, this)) {
            OpenEditor(m_editedItem);
        }
        SetFocus(tree);
        break;
    case PropTreeEditorKey::GiveUp:
        if (const PropTreeItem* const record = m_rows.Find(m_editedItem)) {
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
    const HWND tree = TreeWindow();
    const HTREEITEM item = m_rows.Neighbour(relation, m_editedItem);
    if (item == nullptr) {
        return;
    }
    SendMessageW(tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
    if (CWindowHook::IsOf(tree, this)) {
        SetFocus(m_editor.IsOpen() ? m_editor.Window() : tree);
    }
}

void CPropTree::LeaveForNextControl() const {
    const HWND dialog = GetAncestor(TreeWindow(), GA_ROOT);
    const HWND editor = m_editor.Window();
    const HWND next = GetNextDlgTabItem(dialog, TreeWindow(), FALSE);
    SendMessageW(dialog, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(next), TRUE);
    if (GetFocus() == editor) {
        SetFocus(next); // the host is no dialog
    }
}

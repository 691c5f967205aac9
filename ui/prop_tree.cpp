#include "ui/prop_tree.h"

#include <algorithm>

#include "ui/window_dc.h"
#include "win/message_value.h"

namespace {

constexpr int kHeaderHeightAt96 = 20;
constexpr int kRowPaddingAt96 = 6; // pixels of a row that are not text
constexpr int kIndentAt96 = 19;    // of a row below its group: what the system takes on a usual screen
constexpr int kMinColumnWidthAt96 = 24;
constexpr const WCHAR* kTallText = L"Ggi"; // an ascender, a descender and a dot

constexpr DWORD kChildStyle = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_CLIPSIBLINGS;
// Without TVS_NONEVENHEIGHT the tree would take a pixel off an odd row.
constexpr DWORD kTreeStyle = kChildStyle | WS_TABSTOP | WS_CLIPCHILDREN | TVS_HASBUTTONS | TVS_LINESATROOT |
                             TVS_SHOWSELALWAYS | TVS_FULLROWSELECT | TVS_NONEVENHEIGHT;

const std::wstring kTrue = L"True";
const std::wstring kFalse = L"False";

void InsertColumn(HWND header, int index, const WCHAR* title, int width) {
    HDITEMW column{};
    column.mask = HDI_TEXT | HDI_FORMAT | HDI_WIDTH;
    column.fmt = HDF_LEFT | HDF_STRING;
    column.pszText = const_cast<WCHAR*>(title);
    column.cxy = width;
    SendMessageW(header, HDM_INSERTITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&column));
}

} // namespace

CPropTree::CPropTree() : m_editor([this](PropTreeEditorKey key) { OnEditorKey(key); }) {}

CPropTree::~CPropTree() {
    // Each window forgets us in its WM_DESTROY.
    if (m_tree != nullptr) {
        DestroyWindow(m_tree);
    }
    if (m_header != nullptr) {
        DestroyWindow(m_header);
    }
}

bool CPropTree::Create(HWND parent, const RECT& area) {
    const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_TREEVIEW_CLASSES | ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
    return m_tree == nullptr && CreateHeader(parent, area) && CreateTree(parent, area);
}

bool CPropTree::CreateHeader(HWND parent, const RECT& area) {
    const int width = area.right - area.left;
    m_header = CreateWindowExW(0, WC_HEADERW, nullptr, kChildStyle | HDS_BUTTONS, area.left, area.top, width, 0, parent,
                               nullptr, nullptr, nullptr);
    if (m_header == nullptr) {
        return false;
    }
    SendMessageW(m_header, WM_SETFONT, static_cast<WPARAM>(SendMessageW(parent, WM_GETFONT, 0, 0)), FALSE);
    SetWindowPos(m_header, nullptr, 0, 0, width, HeaderHeight(), SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    m_nameWidth = width / 2;
    InsertColumn(m_header, 0, L"Name", m_nameWidth);
    InsertColumn(m_header, 1, L"Value", width / 2);
    SetWindowLongPtrW(m_header, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_previousHeaderProc = win::FromMessageValue<WNDPROC>(
        SetWindowLongPtrW(m_header, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CPropTree::HeaderProc)));
    return true;
}

bool CPropTree::CreateTree(HWND parent, const RECT& area) {
    const int top = area.top + HeaderHeight();
    m_tree = CreateWindowExW(0, WC_TREEVIEWW, nullptr, kTreeStyle, area.left, top, area.right - area.left,
                             std::max(0, static_cast<int>(area.bottom) - top), parent, nullptr, nullptr, nullptr);
    if (m_tree == nullptr) {
        return false;
    }
    SendMessageW(m_tree, WM_SETFONT, static_cast<WPARAM>(SendMessageW(parent, WM_GETFONT, 0, 0)), FALSE);
    SetWindowLongPtrW(m_tree, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_previousProc = win::FromMessageValue<WNDPROC>(
        SetWindowLongPtrW(m_tree, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&CPropTree::TreeProc)));
    SetRowGeometry();
    return true;
}

// What is no text grows with the resolution as the text and the header do.
void CPropTree::SetRowGeometry() const {
    const WindowDc dc(m_tree, Font());
    Ask(TVM_SETITEMHEIGHT, static_cast<WPARAM>(dc.Measure(kTallText).cy + dc.Scale(kRowPaddingAt96)), 0);
    Ask(TVM_SETINDENT, static_cast<WPARAM>(dc.Scale(kIndentAt96)), 0);
}

HFONT CPropTree::Font() const {
    return win::FromMessageValue<HFONT>(SendMessageW(GetParent(m_tree), WM_GETFONT, 0, 0));
}

int CPropTree::HeaderHeight() const {
    return WindowDc(m_header, nullptr).Scale(kHeaderHeightAt96);
}

void CPropTree::Resize(const RECT& area) {
    if (m_tree == nullptr || m_header == nullptr) {
        return;
    }
    RECT old{};
    GetWindowRect(m_header, &old);
    const int width = area.right - area.left;
    const int top = area.top + HeaderHeight();
    MoveWindow(m_header, area.left, area.top, width, HeaderHeight(), TRUE);
    MoveWindow(m_tree, area.left, top, width, std::max(0, static_cast<int>(area.bottom) - top), TRUE);
    SetNameWidth(old.right > old.left ? MulDiv(m_nameWidth, width, old.right - old.left) : width / 2);
}

// The value column takes what the name column leaves.
void CPropTree::SetNameWidth(int width) {
    RECT window{};
    GetWindowRect(m_header, &window);
    const int whole = window.right - window.left;
    const int least = std::min(whole / 2, WindowDc(m_header, nullptr).Scale(kMinColumnWidthAt96));
    m_nameWidth = std::clamp(width, least, whole - least);
    HDITEMW column{};
    column.mask = HDI_WIDTH;
    column.cxy = m_nameWidth;
    AskHeader(HDM_SETITEMW, 0, reinterpret_cast<LPARAM>(&column));
    column.cxy = whole - m_nameWidth;
    AskHeader(HDM_SETITEMW, 1, reinterpret_cast<LPARAM>(&column));
    InvalidateRect(m_tree, nullptr, TRUE);
    PlaceEditor();
}

HTREEITEM CPropTree::AddLabel(HTREEITEM parent, const std::wstring& label) {
    PropTreeItem item;
    item.parent = parent;
    item.label = label;
    return Insert(std::move(item));
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
    return Insert(std::move(item));
}

HTREEITEM CPropTree::AddText(HTREEITEM parent, const std::wstring& label, const std::wstring& text) {
    PropTreeItem item;
    item.kind = PropItemKind::Text;
    item.parent = parent;
    item.label = label;
    item.text = text;
    return Insert(std::move(item));
}

HTREEITEM CPropTree::Insert(PropTreeItem item) {
    TVINSERTSTRUCTW row{};
    row.hParent = item.parent;
    row.hInsertAfter = TVI_LAST;
    row.item.mask = TVIF_TEXT | TVIF_STATE;
    row.item.state = TVIS_EXPANDED | (item.kind == PropItemKind::Label ? static_cast<UINT>(TVIS_BOLD) : 0);
    row.item.stateMask = row.item.state;
    row.item.pszText = item.label.data();
    const auto handle = win::FromMessageValue<HTREEITEM>(Ask(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row)));
    if (handle != nullptr) {
        m_items[handle] = std::move(item);
    }
    return handle;
}

const PropTreeItem* CPropTree::GetItem(HTREEITEM item) const {
    const auto found = m_items.find(item);
    return found != m_items.end() ? &found->second : nullptr;
}

HTREEITEM CPropTree::GetFirstChild(HTREEITEM item) const {
    return Neighbour(TVGN_CHILD, item);
}

HTREEITEM CPropTree::GetNextSibling(HTREEITEM item) const {
    return Neighbour(TVGN_NEXT, item);
}

HTREEITEM CPropTree::Neighbour(UINT relation, HTREEITEM item) const {
    return win::FromMessageValue<HTREEITEM>(Ask(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
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

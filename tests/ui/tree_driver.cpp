#include "tests/ui/tree_driver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace ui_test {

namespace {

constexpr LONG kAsidePixels = 20;

BOOL CALLBACK KeepTree(HWND window, LPARAM found) {
    if (ClassOf(window) == WC_TREEVIEWW) {
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }
    return TRUE;
}

} // namespace

TreeDriver TreeDriver::Below(HWND window) {
    HWND tree = nullptr;
    EnumChildWindows(window, KeepTree, reinterpret_cast<LPARAM>(&tree));
    EXPECT_NE(nullptr, tree);
    return TreeDriver(tree);
}

HWND TreeDriver::Header() const {
    return FindWindowExW(GetParent(m_tree), nullptr, WC_HEADERW, nullptr);
}

HTREEITEM TreeDriver::Next(UINT relation, HTREEITEM item) const {
    return reinterpret_cast<HTREEITEM>(SendMessageW(m_tree, TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

std::wstring TreeDriver::LabelOf(HTREEITEM item) const {
    WCHAR text[256] = {};
    TVITEMW row{};
    row.mask = TVIF_TEXT;
    row.hItem = item;
    row.pszText = text;
    row.cchTextMax = 256;
    SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&row));
    return text;
}

UINT TreeDriver::StateOf(HTREEITEM item) const {
    TVITEMW row{};
    row.mask = TVIF_STATE;
    row.hItem = item;
    row.stateMask = ~0u;
    SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&row));
    return row.state;
}

HTREEITEM TreeDriver::Find(const std::wstring& path) const {
    HTREEITEM item = nullptr;
    size_t begin = 0;
    while (begin <= path.size()) {
        const size_t end = std::min(path.find(L'/', begin), path.size());
        const std::wstring label = path.substr(begin, end - begin);
        HTREEITEM child = item == nullptr ? Next(TVGN_ROOT, nullptr) : Next(TVGN_CHILD, item);
        while (child != nullptr && LabelOf(child) != label) {
            child = Next(TVGN_NEXT, child);
        }
        EXPECT_NE(nullptr, child) << "no row " << std::string(label.begin(), label.end());
        if (child == nullptr) {
            return nullptr;
        }
        item = child;
        begin = end + 1;
    }
    return item;
}

std::vector<std::wstring> TreeDriver::Rows() const {
    std::vector<std::wstring> rows;
    AppendRows(Next(TVGN_ROOT, nullptr), 0, rows);
    return rows;
}

void TreeDriver::AppendRows(HTREEITEM first, size_t level, std::vector<std::wstring>& rows) const {
    for (HTREEITEM item = first; item != nullptr; item = Next(TVGN_NEXT, item)) {
        rows.push_back(std::wstring(level, L'.').append(LabelOf(item)));
        AppendRows(Next(TVGN_CHILD, item), level + 1, rows);
    }
}

HTREEITEM TreeDriver::Selected() const {
    return Next(TVGN_CARET, nullptr);
}

RECT TreeDriver::RowOf(HTREEITEM item) const {
    RECT row{};
    std::memcpy(&row, &item, sizeof(item));
    EXPECT_TRUE(SendMessageW(m_tree, TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&row)));
    return row;
}

RECT TreeDriver::ValueCellOf(HTREEITEM item) const {
    const RECT row = RowOf(item);
    RECT column{};
    EXPECT_TRUE(SendMessageW(Header(), HDM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&column)));
    RECT client{};
    GetClientRect(m_tree, &client);
    return {column.left, row.top, std::min(column.right, client.right), row.bottom};
}

HWND TreeDriver::Editor() const {
    return GetWindow(m_tree, GW_CHILD);
}

RECT TreeDriver::EditorArea() const {
    RECT area{};
    GetWindowRect(Editor(), &area);
    MapWindowPoints(nullptr, m_tree, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

std::vector<std::wstring> TreeDriver::EditorChoices() const {
    std::vector<std::wstring> choices;
    const HWND list = Editor();
    const LRESULT count = SendMessageW(list, CB_GETCOUNT, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
        const LRESULT length = SendMessageW(list, CB_GETLBTEXTLEN, static_cast<WPARAM>(index), 0);
        std::wstring text(static_cast<size_t>(length), L'\0');
        SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(text.data()));
        choices.push_back(std::move(text));
    }
    return choices;
}

HWND TreeDriver::DropDown() const {
    SendMessageW(Editor(), CB_SHOWDROPDOWN, TRUE, 0);
    PumpMessages();
    COMBOBOXINFO info{};
    info.cbSize = sizeof(info);
    EXPECT_TRUE(GetComboBoxInfo(Editor(), &info));
    EXPECT_TRUE(IsWindowVisible(info.hwndList));
    return info.hwndList;
}

void TreeDriver::ChooseWithKeys(const std::wstring& choice) const {
    const auto choices = EditorChoices();
    const auto indexOf = [&choices](const std::wstring& text) {
        return std::find(choices.begin(), choices.end(), text) - choices.begin();
    };
    const auto wanted = indexOf(choice);
    if (wanted == std::ssize(choices)) {
        ADD_FAILURE() << "no such choice in the open editor";
        return;
    }
    const HWND list = Editor();
    const auto selection = [list] { return SendMessageW(list, CB_GETCURSEL, 0, 0); };
    const auto waits = GetWindowThreadProcessId(list, nullptr) == GetCurrentThreadId() ? PumpUntil : WaitUntil;
    TypeText(choice.substr(0, 1));
    const auto begins = [&] { return selection() >= 0 && choices[static_cast<size_t>(selection())][0] == choice[0]; };
    if (!waits(begins)) {
        ADD_FAILURE() << "the editor does not follow its keys";
        return;
    }
    for (LRESULT at = selection(); at < wanted; ++at) {
        PressKey(VK_DOWN);
        EXPECT_TRUE(waits([&] { return selection() == at + 1; }));
    }
    EXPECT_EQ(wanted, selection());
}

// At a high resolution not every row is in sight; a user would scroll there.
void TreeDriver::BringIntoSight(HTREEITEM item) const {
    RECT client{};
    GetClientRect(m_tree, &client);
    const RECT row = RowOf(item);
    if (!PtInRect(&client, {client.left, (row.top + row.bottom) / 2})) {
        SendMessageW(m_tree, TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
        PumpMessages();
    }
}

void TreeDriver::ClickLabel(const std::wstring& path) const {
    const HTREEITEM item = Find(path);
    BringIntoSight(item);
    RECT text{};
    std::memcpy(&text, &item, sizeof(item));
    EXPECT_TRUE(SendMessageW(m_tree, TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&text)));
    ClickAt(m_tree, {text.left + 5, (text.top + text.bottom) / 2});
}

void TreeDriver::ClickValue(const std::wstring& path) const {
    const HTREEITEM item = Find(path);
    BringIntoSight(item);
    POINT point = MiddleOf(ValueCellOf(item));
    // Two clicks in one place would be a double click; rows that come into sight one after the other stand in one.
    static bool s_isAside = false;
    s_isAside = !s_isAside;
    point.x += s_isAside ? kAsidePixels : 0;
    ClickAt(m_tree, point);
}

} // namespace ui_test

// Where the property tree shows what: columns, rows, editors, lists; scrolled and resized.
#include <algorithm>

#include "tests/ui/prop_tree_rig.h"

using namespace ui_test;

namespace {

// ---- Where things are --------------------------------------------------------------------------------------------

TEST_F(PropTreeTest, TheHeaderHasTwoColumnsOfHalfTheWidthAboveTheTree) {
    const RECT area = m_host.PageArea();
    const int width = area.right - area.left;
    const HWND header = Driver().Header();
    EXPECT_EQ(2, SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
    for (int column = 0; column < 2; ++column) {
        WCHAR title[16] = {};
        HDITEMW item{};
        item.mask = HDI_TEXT | HDI_WIDTH;
        item.pszText = title;
        item.cchTextMax = 16;
        SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
        EXPECT_STREQ(column == 0 ? L"Name" : L"Value", title);
        EXPECT_NEAR(width / 2, item.cxy, 1);
    }
    RECT headerArea{};
    GetWindowRect(header, &headerArea);
    RECT treeArea{};
    GetWindowRect(m_tree->TreeWindow(), &treeArea);
    EXPECT_EQ(MulDiv(20, ScreenDpi(), 96), headerArea.bottom - headerArea.top);
    EXPECT_EQ(headerArea.bottom, treeArea.top);
    EXPECT_EQ(headerArea.left, treeArea.left);
    EXPECT_EQ(headerArea.right, treeArea.right);
    EXPECT_EQ(area.bottom - area.top, treeArea.bottom - headerArea.top);
}

TEST_F(PropTreeTest, StylesAreThoseOfAPropertyTree) {
    const LONG_PTR tree = GetWindowLongPtrW(m_tree->TreeWindow(), GWL_STYLE);
    for (const DWORD style : {static_cast<DWORD>(WS_BORDER), static_cast<DWORD>(WS_TABSTOP),
                              static_cast<DWORD>(TVS_HASBUTTONS), static_cast<DWORD>(TVS_LINESATROOT),
                              static_cast<DWORD>(TVS_SHOWSELALWAYS), static_cast<DWORD>(TVS_FULLROWSELECT)}) {
        EXPECT_EQ(style, static_cast<DWORD>(tree) & style);
    }
    EXPECT_EQ(0u, static_cast<DWORD>(tree) & TVS_HASLINES);
    const LONG_PTR header = GetWindowLongPtrW(Driver().Header(), GWL_STYLE);
    EXPECT_NE(0u, static_cast<DWORD>(header) & HDS_BUTTONS);
    EXPECT_NE(0u, static_cast<DWORD>(header) & WS_BORDER);
}

TEST_F(PropTreeTest, RowsAreTheTextsHeightAndSixPixelsAndAsTheirIndentScaledWithTheScreen) {
    const HWND tree = m_tree->TreeWindow();
    const HDC dc = GetDC(tree);
    const HGDIOBJ previous = SelectObject(dc, reinterpret_cast<HFONT>(SendMessageW(tree, WM_GETFONT, 0, 0)));
    SIZE size{};
    GetTextExtentPoint32W(dc, L"Ggi", 3, &size);
    SelectObject(dc, previous);
    ReleaseDC(tree, dc);
    EXPECT_EQ(size.cy + MulDiv(6, ScreenDpi(), 96), SendMessageW(tree, TVM_GETITEMHEIGHT, 0, 0));
    EXPECT_EQ(MulDiv(19, ScreenDpi(), 96), SendMessageW(tree, TVM_GETINDENT, 0, 0));
    EXPECT_EQ(SendMessageW(m_host.Window(), WM_GETFONT, 0, 0), SendMessageW(tree, WM_GETFONT, 0, 0));
}

TEST_F(PropTreeTest, TheEditorSitsExactlyOnItsCell) {
    for (const WCHAR* label : {L"Name", L"Flag", L"Choice"}) {
        Click(label);
        EXPECT_EQ(Sides(Driver().ValueCellOf(Driver().Selected())), Sides(Driver().EditorArea())) << label;
    }
}

TEST_F(PropTreeTest, BesideAScrollBarTheEditorEndsWhereTheRowCanBeSeen) {
    AddManyRows();
    Click(L"Choice");
    RECT client{};
    GetClientRect(m_tree->TreeWindow(), &client);
    EXPECT_EQ(client.right, Driver().EditorArea().right);
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_choice)), Sides(Driver().EditorArea()));
}

TEST_F(PropTreeTest, AClickOnTheValueOfARowThatIsInSightInPartGivesItsEditorTheKeys) {
    AddManyRows();
    const LRESULT whole = SendMessageW(m_tree->TreeWindow(), TVM_GETVISIBLECOUNT, 0, 0);
    // The group and three rows come first.
    const std::wstring label = L"Row " + std::to_wstring(whole - 4);
    RECT area = m_host.PageArea();
    RECT client{};
    GetClientRect(m_tree->TreeWindow(), &client);
    const auto rowHeight = static_cast<LONG>(SendMessageW(m_tree->TreeWindow(), TVM_GETITEMHEIGHT, 0, 0));
    area.bottom += static_cast<LONG>(whole) * rowHeight + rowHeight * 3 / 4 - client.bottom;
    m_tree->Resize(area);
    PumpMessages();
    const LONG top = Driver().RowOf(Driver().Find(L"Group/" + label)).top;
    Click(label);
    EXPECT_LT(Driver().RowOf(Driver().Selected()).top, top) << "the row was in sight as a whole";
    EXPECT_EQ(label, Driver().LabelOf(Driver().Selected()));
    EXPECT_EQ(Driver().Editor(), GetFocus());
}

TEST_F(PropTreeTest, TheWheelKeepsTheEditorOverItsCell) {
    AddManyRows();
    Click(L"Name");
    const RECT before = Driver().EditorArea();
    TurnWheel(m_tree->TreeWindow(), {10, before.bottom + 30}, -1);
    PumpMessages();
    const RECT after = Driver().EditorArea();
    EXPECT_LT(after.top, before.top) << "nothing was scrolled";
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_name)), Sides(after));
    TurnWheel(m_tree->TreeWindow(), {10, before.bottom + 30}, 1);
    PumpMessages();
    EXPECT_EQ(Sides(before), Sides(Driver().EditorArea()));
}

TEST_F(PropTreeTest, TheScrollBarKeepsTheEditorOverItsCell) {
    AddManyRows();
    Click(L"Choice");
    SendMessageW(m_tree->TreeWindow(), WM_VSCROLL, SB_LINEDOWN, 0);
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_choice)), Sides(Driver().EditorArea()));
    SendMessageW(m_tree->TreeWindow(), WM_VSCROLL, SB_BOTTOM, 0);
    EXPECT_LT(Driver().EditorArea().bottom, 0) << "out of sight with its row";
    SendMessageW(m_tree->TreeWindow(), WM_VSCROLL, SB_TOP, 0);
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_choice)), Sides(Driver().EditorArea()));
}

TEST_F(PropTreeTest, TheWheelOverAnOpenListEditorScrollsAndChangesNoChoice) {
    AddManyRows();
    Click(L"Choice");
    SetFocus(Driver().Editor());
    const RECT before = Driver().EditorArea();
    TurnWheel(Driver().Editor(), {5, 5}, -1);
    PumpMessages();
    EXPECT_EQ(L"two", TextOf(Driver().Editor()));
    EXPECT_LT(Driver().EditorArea().top, before.top);
}

TEST_F(PropTreeTest, ValuesAndEditorFollowTheHeadersDivider) {
    Click(L"Name");
    RECT column{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&column));
    const LONG middle = (column.top + column.bottom) / 2;
    DragFromTo(Driver().Header(), {column.right, middle}, {column.right - 40, middle});
    PumpMessages();
    RECT moved{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&moved));
    EXPECT_NEAR(column.right - 40, moved.right, 3);
    RECT client{};
    GetClientRect(m_tree->TreeWindow(), &client);
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_name)), Sides(Driver().EditorArea()));
    EXPECT_EQ(client.right, Driver().EditorArea().right) << "the value column takes what the other left";
}

TEST_F(PropTreeTest, NoColumnCanBeDraggedAway) {
    RECT column{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&column));
    const LONG middle = (column.top + column.bottom) / 2;
    DragFromTo(Driver().Header(), {column.right, middle}, {column.right * 2 + 50, middle});
    PumpMessages();
    RECT value{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 1, reinterpret_cast<LPARAM>(&value));
    EXPECT_GE(value.right - value.left, 20);
}

TEST_F(PropTreeTest, BothColumnsFollowAResize) {
    Click(L"Name");
    RECT area = m_host.PageArea();
    area.right -= 100;
    m_tree->Resize(area);
    PumpMessages();
    RECT name{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&name));
    EXPECT_NEAR((area.right - area.left) / 2, name.right, 1);
    RECT client{};
    GetClientRect(m_tree->TreeWindow(), &client);
    EXPECT_EQ(client.right, Driver().EditorArea().right);
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_name)), Sides(Driver().EditorArea()));
}

TEST_F(PropTreeTest, TheColumnsKeepTheirProportionWhenTheTreeIsMadeMuchNarrower) {
    RECT area = m_host.PageArea();
    area.right = area.left + (area.right - area.left) * 2 / 5;
    m_tree->Resize(area);
    PumpMessages();
    RECT name{};
    SendMessageW(Driver().Header(), HDM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&name));
    EXPECT_NEAR((area.right - area.left) / 2, name.right, 1);
}

TEST_F(PropTreeTest, ALongListIsOpenedOverABoundedHeightAndScrolls) {
    Texts choices;
    for (int i = 0; i < 500; ++i) {
        choices.push_back(L"choice " + std::to_wstring(i));
    }
    m_tree->AddList(m_group, L"Long list", choices, 250);
    Click(L"Long list");
    EXPECT_EQ(500u, Driver().EditorChoices().size());
    SendMessageW(Driver().Editor(), CB_SHOWDROPDOWN, TRUE, 0);
    PumpMessages();
    COMBOBOXINFO info{};
    info.cbSize = sizeof(info);
    ASSERT_TRUE(GetComboBoxInfo(Driver().Editor(), &info));
    RECT list{};
    GetWindowRect(info.hwndList, &list);
    EXPECT_LT(list.bottom - list.top, GetSystemMetrics(SM_CYSCREEN) / 2);
    EXPECT_GT(list.bottom - list.top, 5 * SendMessageW(Driver().Editor(), CB_GETITEMHEIGHT, 0, 0));
    EXPECT_NE(0, GetWindowLongPtrW(info.hwndList, GWL_STYLE) & WS_VSCROLL);
}

TEST_F(PropTreeTest, AnOpenListIsWideEnoughForEveryChoice) {
    const std::wstring wide(80, L'W');
    m_tree->AddList(m_group, L"Wide", {L"a", wide}, 0);
    Click(L"Wide");
    EXPECT_GT(SendMessageW(Driver().Editor(), CB_GETDROPPEDWIDTH, 0, 0),
              Driver().EditorArea().right - Driver().EditorArea().left);
}

} // namespace

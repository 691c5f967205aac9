// The open lists of the property tree: how many choices can be seen, and that each of them can be clicked.
#include <algorithm>

#include "tests/ui/prop_tree_rig.h"

using namespace ui_test;

namespace {

class PropTreeListTest : public PropTreeTest {
  protected:
    HTREEITEM AddChoices(const std::wstring& label, int count) {
        Texts choices;
        for (int i = 0; i < count; ++i) {
            choices.push_back(L"choice " + std::to_wstring(i));
        }
        return m_tree->AddList(m_group, label, choices, 0);
    }
};

LONG RowHeightOf(HWND list) {
    return static_cast<LONG>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
}

// Pixels that rows are shown in.
LONG HeightOfRows(HWND list) {
    RECT client{};
    GetClientRect(list, &client);
    return client.bottom;
}

void ClickRow(HWND list, LONG row) {
    ClickAt(list, {5, RowHeightOf(list) * row + RowHeightOf(list) / 2});
    PumpMessages();
}

TEST_F(PropTreeListTest, AListOfTwoChoicesShowsBothWhenItIsOpen) {
    Click(L"Flag");
    const HWND list = Driver().DropDown();
    EXPECT_EQ(2, SendMessageW(list, LB_GETCOUNT, 0, 0));
    EXPECT_EQ(2 * RowHeightOf(list), HeightOfRows(list));
}

TEST_F(PropTreeListTest, AClickOnTheSecondOfTwoChoicesChoosesIt) {
    Click(L"Flag");
    ClickRow(Driver().DropDown(), 1);
    EXPECT_EQ(L"False", TextOf(Driver().Editor()));
    Click(L"Name");
    EXPECT_FALSE(CPropTree::GetBool(*m_tree->GetItem(m_flag)));
    EXPECT_EQ(1, m_host.ValueChanges());
}

TEST_F(PropTreeListTest, ListsShowEveryChoiceUpToTwelve) {
    for (const int count : {1, 3, 11, 12, 13, 566}) {
        const std::wstring label = std::to_wstring(count) + L" choices";
        AddChoices(label, count);
        Click(label);
        const HWND list = Driver().DropDown();
        EXPECT_EQ(std::min(count, 12) * RowHeightOf(list), HeightOfRows(list)) << count << " choices";
        EXPECT_EQ(count > 12, (GetWindowLongPtrW(list, GWL_STYLE) & WS_VSCROLL) != 0) << count << " choices";
        SendMessageW(Driver().Editor(), CB_SHOWDROPDOWN, FALSE, 0); // or the next click would only close it
    }
}

TEST_F(PropTreeListTest, AClickOnTheTwelfthOfManyChoicesChoosesIt) {
    const HTREEITEM item = AddChoices(L"Long", 100);
    Click(L"Long");
    ClickRow(Driver().DropDown(), 11);
    Click(L"Name");
    EXPECT_EQ(11u, m_tree->GetItem(item)->selection);
}

TEST_F(PropTreeListTest, AListKeepsItsHeightWhenTheColumnGrowsAndTheTreeScrolls) {
    AddManyRows();
    Click(L"Choice");
    RECT area = m_host.PageArea();
    area.right -= 60;
    m_tree->Resize(area);
    SendMessageW(m_tree->TreeWindow(), WM_VSCROLL, SB_LINEDOWN, 0);
    PumpMessages();
    const HWND list = Driver().DropDown();
    EXPECT_EQ(3 * RowHeightOf(list), HeightOfRows(list));
    EXPECT_EQ(Sides(Driver().ValueCellOf(m_choice)), Sides(Driver().EditorArea()));
}

// ---- Nothing is selected yet -------------------------------------------------------------------------------------

TEST_F(PropTreeListTest, TheFirstChoiceCanBeChosenWhereNoneIsSelected) {
    const HTREEITEM item = m_tree->AddList(m_group, L"Unknown", {L"first", L"second"}, 0xFFFFFFFF);
    Click(L"Unknown");
    ClickRow(Driver().DropDown(), 0);
    EXPECT_EQ(L"first", TextOf(Driver().Editor()));
    Click(L"Name");
    EXPECT_EQ(0u, m_tree->GetItem(item)->selection);
    EXPECT_EQ(L"first", ShownValueOf(*m_tree->GetItem(item)));
    EXPECT_EQ(1, m_host.ValueChanges());
    Click(L"Unknown");
    ClickRow(Driver().DropDown(), 0);
    Click(L"Name");
    EXPECT_EQ(1, m_host.ValueChanges()) << "it is selected already";
}

TEST_F(PropTreeListTest, GivingTheFirstChoiceUpLeavesNoneSelected) {
    const HTREEITEM item = m_tree->AddList(m_group, L"Unknown", {L"first", L"second"}, 0xFFFFFFFF);
    Click(L"Unknown");
    ClickRow(Driver().DropDown(), 0);
    PressKey(VK_ESCAPE);
    PumpMessages();
    EXPECT_EQ(L"", TextOf(Driver().Editor()));
    Click(L"Name");
    EXPECT_EQ(0xFFFFFFFF, m_tree->GetItem(item)->selection);
    EXPECT_EQ(0, m_host.ValueChanges());
}

} // namespace

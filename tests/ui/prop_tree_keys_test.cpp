// The property tree used with keys.
#include "tests/ui/prop_tree_rig.h"

using namespace ui_test;

namespace {

// ---- Keys --------------------------------------------------------------------------------------------------------

TEST_F(PropTreeTest, ArrowKeysMoveFromRowToRowAndOpenTheirEditors) {
    Driver().ClickLabel(L"Group");
    PumpMessages();
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    for (const HTREEITEM item : {m_name, m_flag, m_choice}) {
        PressKey(VK_DOWN);
        PumpMessages();
        EXPECT_EQ(item, Driver().Selected());
        EXPECT_NE(nullptr, Driver().Editor());
        EXPECT_EQ(m_tree->TreeWindow(), GetFocus()) << "the keys stay with the rows";
    }
}

TEST_F(PropTreeTest, TabGoesFromTheRowIntoItsEditorAndOnToTheNextControl) {
    Driver().ClickLabel(L"Group/Name");
    PumpMessages();
    PressKey(VK_TAB);
    PumpMessages();
    EXPECT_EQ(Driver().Editor(), GetFocus());
    PressKey(VK_TAB);
    PumpMessages();
    EXPECT_EQ(m_host.OkButton(), GetFocus());
    PressKey(VK_TAB, VK_SHIFT);
    PumpMessages();
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    PressKey(VK_TAB);
    PumpMessages();
    EXPECT_EQ(Driver().Editor(), GetFocus());
    PressKey(VK_TAB, VK_SHIFT);
    PumpMessages();
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
}

TEST_F(PropTreeTest, TabPassesALabelRow) {
    Driver().ClickLabel(L"Group");
    PumpMessages();
    PressKey(VK_TAB);
    PumpMessages();
    EXPECT_EQ(m_host.OkButton(), GetFocus());
}

TEST_F(PropTreeTest, EnterTakesTheEditOverAndPressesNoButton) {
    Click(L"Name");
    EXPECT_EQ(Driver().Editor(), GetFocus()) << "a click on a value is for its editor";
    TypeText(L"entered");
    PressKey(VK_RETURN);
    PumpMessages();
    EXPECT_EQ(L"entered", StoredName());
    EXPECT_EQ(1, m_host.ValueChanges());
    EXPECT_EQ(0, m_host.Commands());
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    Click(L"Flag");
    EXPECT_EQ(1, m_host.ValueChanges()) << "it was told already";
    Driver().ClickLabel(L"Group");
    PumpMessages();
    PressKey(VK_RETURN);
    PumpMessages();
    EXPECT_EQ(1, m_host.Commands()) << "without an edit Enter is the dialog's";
}

TEST_F(PropTreeTest, EscapeGivesTheEditUpAndClosesNothing) {
    Click(L"Name");
    TypeText(L"given up");
    PressKey(VK_ESCAPE);
    PumpMessages();
    EXPECT_EQ(L"before", TextOf(Driver().Editor()));
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    EXPECT_EQ(0, m_host.Commands());
    Click(L"Flag");
    EXPECT_EQ(L"before", StoredName());
    EXPECT_EQ(0, m_host.ValueChanges());
}

TEST_F(PropTreeTest, EnterInAnOpenListChoosesAndTakesOver) {
    Click(L"Choice");
    PressKey(VK_F4);
    PumpMessages();
    EXPECT_TRUE(SendMessageW(Driver().Editor(), CB_GETDROPPEDSTATE, 0, 0));
    PressKey(VK_DOWN);
    PressKey(VK_RETURN);
    PumpMessages();
    EXPECT_EQ(2u, m_tree->GetItem(m_choice)->selection);
    EXPECT_FALSE(SendMessageW(Driver().Editor(), CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(1, m_host.ValueChanges());
    EXPECT_EQ(0, m_host.Commands());
}

TEST_F(PropTreeTest, EscapeClosesAnOpenListFirstAndThenGivesUp) {
    Click(L"Choice");
    PressKey(VK_F4);
    PumpMessages();
    PressKey(VK_ESCAPE);
    PumpMessages();
    EXPECT_FALSE(SendMessageW(Driver().Editor(), CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(Driver().Editor(), GetFocus());
    PressKey(VK_DOWN);
    PressKey(VK_ESCAPE);
    PumpMessages();
    EXPECT_EQ(L"two", TextOf(Driver().Editor()));
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    EXPECT_EQ(0, m_host.Commands());
}

TEST_F(PropTreeTest, UpAndDownLeaveAnEditBoxForTheNeighbourRows) {
    const HTREEITEM second = m_tree->AddText(m_group, L"Second", L"");
    Click(L"Second");
    TypeText(L"2");
    PressKey(VK_UP);
    PumpMessages();
    EXPECT_EQ(L"2", m_tree->GetItem(second)->text);
    EXPECT_EQ(m_choice, Driver().Selected());
    EXPECT_EQ(Driver().Editor(), GetFocus());
}

TEST_F(PropTreeTest, F2GoesIntoTheEditor) {
    Driver().ClickLabel(L"Group/Name");
    PumpMessages();
    EXPECT_EQ(m_tree->TreeWindow(), GetFocus());
    PressKey(VK_F2);
    PumpMessages();
    EXPECT_EQ(Driver().Editor(), GetFocus());
}

} // namespace

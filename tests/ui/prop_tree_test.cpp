// The property tree in a dialog: what its items are, and what an edit does to them.
#include <cstdlib>

#include "tests/ui/prop_tree_rig.h"

using namespace ui_test;

namespace {

// The runner says at which resolution it runs us; at another one the run would prove nothing.
TEST(ScreenTest, HasTheResolutionThatIsAskedFor) {
    const char* const asked = std::getenv("QRX_SCREEN_DPI");
    EXPECT_EQ(asked != nullptr ? std::atoi(asked) : 96, ScreenDpi());
}

// ---- What is stored ----------------------------------------------------------------------------------------------

TEST_F(PropTreeTest, ATypedTextIsStoredWhenAnotherRowIsSelectedAndIsToldOnce) {
    Click(L"Name");
    TypeText(L"after");
    PumpMessages();
    EXPECT_EQ(L"before", StoredName()) << "an open edit is not in the record";
    EXPECT_EQ(0, m_host.ValueChanges());
    Click(L"Flag");
    EXPECT_EQ(L"after", StoredName());
    EXPECT_EQ(1, m_host.ValueChanges());
    EXPECT_EQ(m_tree->TreeWindow(), m_host.LastSender());
}

TEST_F(PropTreeTest, RetypingTheSameTextTellsNothing) {
    Click(L"Name");
    TypeText(L"before");
    PumpMessages();
    EXPECT_EQ(L"before", TextOf(Driver().Editor()));
    Click(L"Flag");
    EXPECT_EQ(L"before", StoredName());
    EXPECT_EQ(0, m_host.ValueChanges());
}

TEST_F(PropTreeTest, ABooleanShowsTrueOrFalseAndOffersBoth) {
    Click(L"Flag");
    EXPECT_EQ(WC_COMBOBOXW, ClassOf(Driver().Editor()));
    EXPECT_EQ((Texts{L"True", L"False"}), Driver().EditorChoices());
    EXPECT_EQ(L"True", TextOf(Driver().Editor()));
    EXPECT_EQ(L"True", ShownValueOf(*m_tree->GetItem(m_flag)));
    PressKey(VK_DOWN);
    PumpMessages();
    EXPECT_TRUE(CPropTree::GetBool(*m_tree->GetItem(m_flag))) << "an open edit is not in the record";
    Click(L"Name");
    EXPECT_FALSE(CPropTree::GetBool(*m_tree->GetItem(m_flag)));
    EXPECT_EQ(L"False", ShownValueOf(*m_tree->GetItem(m_flag)));
    EXPECT_EQ(1, m_host.ValueChanges());
}

TEST_F(PropTreeTest, AChoiceIsStoredWhenTheSelectionLeaves) {
    Click(L"Choice");
    EXPECT_EQ((Texts{L"one", L"two", L"three"}), Driver().EditorChoices());
    EXPECT_EQ(L"two", TextOf(Driver().Editor()));
    PressKey(VK_DOWN);
    PumpMessages();
    Click(L"Name");
    EXPECT_EQ(2u, m_tree->GetItem(m_choice)->selection);
    EXPECT_EQ(L"three", CPropTree::GetSelectedText(*m_tree->GetItem(m_choice)));
}

TEST_F(PropTreeTest, LabelsAreBoldAndHaveNoEditor) {
    EXPECT_NE(0u, Driver().StateOf(m_group) & TVIS_BOLD);
    EXPECT_NE(0u, Driver().StateOf(m_group) & TVIS_EXPANDED);
    for (HTREEITEM item : {m_name, m_flag, m_choice}) {
        EXPECT_EQ(0u, Driver().StateOf(item) & TVIS_BOLD);
    }
    Click(L"Name");
    EXPECT_NE(nullptr, Driver().Editor());
    Driver().ClickLabel(L"Group");
    PumpMessages();
    EXPECT_EQ(m_group, Driver().Selected());
    EXPECT_EQ(nullptr, Driver().Editor());
}

TEST_F(PropTreeTest, ASelectionThatIsOutOfRangeReadsAsTheFirstChoiceAndAsFalse) {
    const HTREEITEM item = m_tree->AddList(m_group, L"Unknown", {L"True", L"other"}, 0xFFFFFFFF);
    EXPECT_EQ(L"True", CPropTree::GetSelectedText(*m_tree->GetItem(item)));
    EXPECT_FALSE(CPropTree::GetBool(*m_tree->GetItem(item)));
    EXPECT_EQ(L"", ShownValueOf(*m_tree->GetItem(item)));
    Click(L"Unknown");
    EXPECT_EQ(CB_ERR, SendMessageW(Driver().Editor(), CB_GETCURSEL, 0, 0));
    Click(L"Name");
    EXPECT_EQ(0xFFFFFFFF, m_tree->GetItem(item)->selection) << "looking at it changes nothing";
    EXPECT_EQ(0, m_host.ValueChanges());
    Click(L"Unknown");
    TypeText(L"o");
    PumpMessages();
    Click(L"Name");
    EXPECT_EQ(L"other", CPropTree::GetSelectedText(*m_tree->GetItem(item)));
}

TEST_F(PropTreeTest, GetBoolIsTrueForTheTextTrueAlone) {
    PropTreeItem item;
    item.kind = PropItemKind::List;
    item.choices = {L"true", L"TRUE", L"True"};
    EXPECT_FALSE(CPropTree::GetBool(item));
    item.selection = 1;
    EXPECT_FALSE(CPropTree::GetBool(item));
    item.selection = 2;
    EXPECT_TRUE(CPropTree::GetBool(item));
}

TEST_F(PropTreeTest, ItemsAreFoundByTheirPlaceAndUnknownOnesAreNone) {
    EXPECT_EQ(m_name, m_tree->GetFirstChild(m_group));
    EXPECT_EQ(m_flag, m_tree->GetNextSibling(m_name));
    EXPECT_EQ(nullptr, m_tree->GetFirstChild(m_name));
    EXPECT_EQ(nullptr, m_tree->GetNextSibling(m_choice));
    EXPECT_EQ(nullptr, m_tree->GetItem(nullptr));
    EXPECT_EQ(m_group, m_tree->GetItem(m_name)->parent);
    EXPECT_EQ(PropItemKind::Label, m_tree->GetItem(m_group)->kind);
}

// ---- Long and unusual texts --------------------------------------------------------------------------------------

TEST_F(PropTreeTest, AnEditedTextIsReadUpTo255Characters) {
    Click(L"Name");
    SetText(std::wstring(300, L'x').c_str());
    Click(L"Flag");
    EXPECT_EQ(std::wstring(255, L'x'), StoredName());
}

TEST_F(PropTreeTest, TheEditBoxTakesNoMoreThan255TypedCharacters) {
    Click(L"Name");
    SetText(std::wstring(254, L'x').c_str());
    PressKey(VK_END);
    TypeText(L"yz");
    PumpMessages();
    EXPECT_EQ(std::wstring(254, L'x') + L"y", TextOf(Driver().Editor()));
}

TEST_F(PropTreeTest, TheLimitSplitsNoSurrogatePair) {
    Click(L"Name");
    SetText((std::wstring(254, L'x') + L"\xD83D\xDE00").c_str());
    Click(L"Flag");
    EXPECT_EQ(std::wstring(254, L'x'), StoredName());
}

TEST_F(PropTreeTest, TypedSupplementaryCharactersAreStored) {
    Click(L"Name");
    TypeText(L"\xD83D\xDE00!");
    PumpMessages();
    Click(L"Flag");
    EXPECT_EQ(L"\xD83D\xDE00!", StoredName());
}

TEST_F(PropTreeTest, ALongTextThatNobodyEditsSurvivesItsEditor) {
    const std::wstring text(10000, L'x');
    const HTREEITEM item = m_tree->AddText(m_group, L"Long", text);
    Click(L"Long");
    EXPECT_EQ(WC_EDITW, ClassOf(Driver().Editor()));
    Click(L"Name");
    EXPECT_EQ(text, m_tree->GetItem(item)->text);
    EXPECT_EQ(0, m_host.ValueChanges());
}

TEST_F(PropTreeTest, ATextWithAZeroInsideSurvivesItsEditor) {
    const std::wstring text(L"a\0b", 3);
    const HTREEITEM item = m_tree->AddText(m_group, L"Zero", text);
    Click(L"Zero");
    Click(L"Name");
    EXPECT_EQ(text, m_tree->GetItem(item)->text);
}

// ---- Ends --------------------------------------------------------------------------------------------------------

TEST_F(PropTreeTest, CollapsingTheGroupStoresTheEditInside) {
    Click(L"Name");
    TypeText(L"inside");
    PumpMessages();
    SendMessageW(m_tree->TreeWindow(), TVM_EXPAND, TVE_COLLAPSE, reinterpret_cast<LPARAM>(m_group));
    PumpMessages();
    EXPECT_EQ(nullptr, Driver().Editor());
    EXPECT_EQ(L"inside", StoredName());
    EXPECT_EQ(1, m_host.ValueChanges());
}

TEST_F(PropTreeTest, DestroyedWithAnOpenEditorItStoresAndTellsNothing) {
    Click(L"Name");
    TypeText(L"lost");
    PumpMessages();
    const HWND tree = m_tree->TreeWindow();
    const HWND header = Driver().Header();
    m_tree.reset();
    EXPECT_FALSE(IsWindow(tree));
    EXPECT_FALSE(IsWindow(header));
    EXPECT_EQ(0, m_host.ValueChanges());
}

TEST_F(PropTreeTest, ItsParentMayBeDestroyedFirst) {
    Click(L"Choice");
    const HWND tree = m_tree->TreeWindow();
    DestroyWindow(m_host.Window());
    EXPECT_FALSE(IsWindow(tree));
    EXPECT_EQ(nullptr, m_tree->TreeWindow());
    EXPECT_NE(nullptr, m_tree->GetItem(m_name)) << "the records are its own";
    EXPECT_EQ(nullptr, m_tree->AddLabel(TVI_ROOT, L"too late"));
}

TEST_F(PropTreeTest, ItIsCreatedOnce) {
    EXPECT_FALSE(m_tree->Create(m_host.Window(), m_host.PageArea()));
}

} // namespace

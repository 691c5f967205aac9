// What the property tree paints into its value column, pixel by pixel: on the screen and where it prints itself.
#include <cstring>

#include "tests/ui/picture.h"
#include "tests/ui/prop_tree_rig.h"

using namespace ui_test;

namespace {

// What is drawn in that part of the picture, without the room around it.
std::vector<COLORREF> InkIn(const Picture& picture, const RECT& area) {
    const auto ink = picture.Ink(area);
    return ink ? picture.Part(*ink) : std::vector<COLORREF>();
}

class PropTreePaintTest : public PropTreeTest {
  protected:
    [[nodiscard]] RECT LabelCellOf(HTREEITEM item) const {
        RECT text{};
        std::memcpy(&text, &item, sizeof(item));
        EXPECT_TRUE(SendMessageW(m_tree->TreeWindow(), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&text)));
        return text;
    }
    // Nothing but that text, in the tree's font and colours.
    void ExpectValue(const Picture& picture, HTREEITEM item, const WCHAR* text) const {
        const Picture alone = Picture::OfText(m_tree->TreeWindow(), text);
        EXPECT_TRUE(InkIn(alone, alone.Whole()) == InkIn(picture, Driver().ValueCellOf(item)))
            << "the value beside " << std::string(text, text + std::wcslen(text)) << " shows something else";
    }
    void ExpectValuesIn(const Picture& picture) const {
        ExpectValue(picture, m_name, L"before");
        ExpectValue(picture, m_flag, L"True");
        ExpectValue(picture, m_choice, L"two");
        EXPECT_FALSE(picture.Ink(Driver().ValueCellOf(m_group))) << "a label has no value";
    }
};

TEST_F(PropTreePaintTest, ValuesStandBesideTheirLabelsOnTheScreen) {
    ExpectValuesIn(Picture::OfScreen(m_tree->TreeWindow()));
}

TEST_F(PropTreePaintTest, ThePrintedTreeHasItsValues) {
    ExpectValuesIn(Picture::OfPrint(m_tree->TreeWindow()));
}

TEST_F(PropTreePaintTest, ATreeThatPaintsWhereItIsToldHasItsValues) {
    ExpectValuesIn(Picture::OfPaint(m_tree->TreeWindow()));
}

TEST_F(PropTreePaintTest, PrintingLeavesTheDeviceContextAsItWas) {
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ font = GetCurrentObject(memory, OBJ_FONT);
    SetTextColor(memory, RGB(1, 2, 3));
    SetBkMode(memory, OPAQUE);
    SendMessageW(m_tree->TreeWindow(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(memory), PRF_CLIENT);
    EXPECT_EQ(font, GetCurrentObject(memory, OBJ_FONT));
    EXPECT_EQ(RGB(1, 2, 3), GetTextColor(memory));
    EXPECT_EQ(OPAQUE, GetBkMode(memory));
    DeleteDC(memory);
}

TEST_F(PropTreePaintTest, AStoredEditIsShownInPlaceOfTheOldValue) {
    Click(L"Name");
    TypeText(L"after");
    Click(L"Flag");
    ASSERT_EQ(L"after", StoredName());
    ExpectValue(Picture::OfScreen(m_tree->TreeWindow()), m_name, L"after");
}

TEST_F(PropTreePaintTest, ValuesAreShownAfterTheTreeWasScrolled) {
    AddManyRows();
    SendMessageW(m_tree->TreeWindow(), WM_VSCROLL, SB_BOTTOM, 0);
    PumpMessages();
    ExpectValue(Picture::OfScreen(m_tree->TreeWindow()), Driver().Find(L"Group/Row 59"), L"59");
}

TEST_F(PropTreePaintTest, ValuesStandOnTheLineOfTheirLabels) {
    for (const WCHAR* text : {L"Hxg", L"Hxg", L"Hxg"}) { // in rows that begin at odd and at even pixels
        const HTREEITEM item = m_tree->AddText(m_group, text, text);
        PumpMessages();
        const Picture picture = Picture::OfScreen(m_tree->TreeWindow());
        const auto label = picture.Ink(LabelCellOf(item));
        const auto value = picture.Ink(Driver().ValueCellOf(item));
        ASSERT_TRUE(label && value);
        EXPECT_EQ(label->top, value->top);
        EXPECT_EQ(label->bottom, value->bottom);
    }
}

TEST_F(PropTreePaintTest, ALabelThatIsTooLongEndsWhereTheValueBegins) {
    const HTREEITEM item = m_tree->AddText(m_group, std::wstring(200, L'W'), L"short");
    PumpMessages();
    ExpectValue(Picture::OfScreen(m_tree->TreeWindow()), item, L"short");
}

} // namespace

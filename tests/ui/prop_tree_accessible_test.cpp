// What a screen reader is told of the property tree: labels with their values.
#include <oleacc.h>

#include "tests/ui/prop_tree_rig.h"
#include "win/bstr.h"
#include "win/com_ptr.h"

using namespace ui_test;

namespace {

class PropTreeAccessibleTest : public PropTreeTest {
  protected:
    void SetUp() override {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        PropTreeTest::SetUp();
        m_object = ObjectOf(m_tree->TreeWindow());
        ASSERT_TRUE(m_object);
    }
    void TearDown() override {
        m_object.Reset();
        CoUninitialize();
    }
    static win::ComPtr<IAccessible> ObjectOf(HWND window) {
        win::ComPtr<IAccessible> object;
        EXPECT_EQ(S_OK, AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT), __uuidof(IAccessible),
                                                   object.PutVoid()));
        return object;
    }
    // The number by which the tree's events name an item: the one of newer common controls, or the handle.
    [[nodiscard]] LONG NumberOf(HTREEITEM item) const {
        const auto number = static_cast<LONG>(
            SendMessageW(m_tree->TreeWindow(), TVM_MAPHTREEITEMTOACCID, reinterpret_cast<WPARAM>(item), 0));
        return number != 0 ? number : static_cast<LONG>(reinterpret_cast<LONG_PTR>(item));
    }
    static VARIANT Child(LONG number) {
        VARIANT child{};
        child.vt = VT_I4;
        child.lVal = number;
        return child;
    }
    [[nodiscard]] std::wstring NameOf(HTREEITEM item) const {
        win::Bstr name;
        EXPECT_EQ(S_OK, m_object->get_accName(Child(NumberOf(item)), name.Put()));
        return std::wstring(name.View());
    }

    win::ComPtr<IAccessible> m_object;
};

TEST_F(PropTreeAccessibleTest, NamesAreLabelsWithTheirValues) {
    EXPECT_EQ(L"Name: before", NameOf(m_name));
    EXPECT_EQ(L"Flag: True", NameOf(m_flag));
    EXPECT_EQ(L"Choice: two", NameOf(m_choice));
    EXPECT_EQ(L"Group", NameOf(m_group));
    EXPECT_EQ(L"Name", Driver().LabelOf(m_name)) << "the item's own text stays its label";
}

TEST_F(PropTreeAccessibleTest, ANameFollowsTheStoredEdit) {
    Click(L"Name");
    TypeText(L"after");
    PumpMessages();
    EXPECT_EQ(L"Name: before", NameOf(m_name)) << "an open edit is not in the record";
    Click(L"Flag");
    EXPECT_EQ(L"Name: after", NameOf(m_name));
}

TEST_F(PropTreeAccessibleTest, TheTreeItselfAndUnknownChildrenAreTheSystemsAffair) {
    win::Bstr name;
    EXPECT_TRUE(SUCCEEDED(m_object->get_accName(Child(CHILDID_SELF), name.Put())));
    EXPECT_TRUE(FAILED(m_object->get_accName(Child(0x7FFFFFF1), name.Put())));
    EXPECT_EQ(E_INVALIDARG, m_object->get_accName(Child(NumberOf(m_name)), nullptr));
    VARIANT role{};
    EXPECT_EQ(S_OK, m_object->get_accRole(Child(CHILDID_SELF), &role));
}

TEST_F(PropTreeAccessibleTest, AReaderMayKeepItLongerThanTheTree) {
    const LONG number = NumberOf(m_name);
    m_tree.reset();
    win::Bstr name;
    EXPECT_TRUE(FAILED(m_object->get_accName(Child(number), name.Put())));
    EXPECT_EQ(nullptr, name.Get());
}

LONG changedChild = 0;
HWND changedWindow = nullptr;

void CALLBACK NoteChange(HWINEVENTHOOK, DWORD, HWND window, LONG object, LONG child, DWORD, DWORD) {
    if (object == OBJID_CLIENT) {
        changedWindow = window;
        changedChild = child;
    }
}

TEST_F(PropTreeAccessibleTest, AStoredEditIsToldAsAChangedName) {
    const HWINEVENTHOOK hook = SetWinEventHook(EVENT_OBJECT_NAMECHANGE, EVENT_OBJECT_NAMECHANGE, nullptr, NoteChange,
                                               GetCurrentProcessId(), 0, WINEVENT_OUTOFCONTEXT);
    ASSERT_NE(nullptr, hook);
    Click(L"Name");
    TypeText(L"after");
    Click(L"Flag");
    EXPECT_TRUE(PumpUntil([this] { return changedWindow == m_tree->TreeWindow(); }));
    EXPECT_EQ(NumberOf(m_name), changedChild);
    UnhookWinEvent(hook);
}

} // namespace

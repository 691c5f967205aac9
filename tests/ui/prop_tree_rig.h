// PropTreeTest: a property tree with one of each kind of item, in a dialog on the screen.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/ui/host_dialog.h"
#include "tests/ui/tree_driver.h"
#include "ui/prop_tree.h"

namespace ui_test {

using Texts = std::vector<std::wstring>;

// Left, top, right, bottom, so that a failure shows the numbers.
inline std::vector<LONG> Sides(const RECT& area) {
    return {area.left, area.top, area.right, area.bottom};
}

inline int ScreenDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

class PropTreeTest : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_tree->Create(m_host.Window(), m_host.PageArea()));
        ShowWindow(GetDlgItem(m_host.Window(), 501), SW_HIDE);
        m_group = m_tree->AddLabel(TVI_ROOT, L"Group");
        m_name = m_tree->AddText(m_group, L"Name", L"before");
        m_flag = m_tree->AddBool(m_group, L"Flag", true);
        m_choice = m_tree->AddList(m_group, L"Choice", {L"one", L"two", L"three"}, 1);
        PumpMessages();
    }

    [[nodiscard]] TreeDriver Driver() const { return TreeDriver(m_tree->TreeWindow()); }
    [[nodiscard]] const std::wstring& StoredName() const { return m_tree->GetItem(m_name)->text; }
    void Click(const std::wstring& label) const {
        Driver().ClickValue(L"Group/" + label);
        PumpMessages();
    }
    // Enough rows that the tree scrolls.
    void AddManyRows() {
        for (int row = 0; row < 60; ++row) {
            m_tree->AddText(m_group, L"Row " + std::to_wstring(row), std::to_wstring(row));
        }
        PumpMessages();
    }
    void SetText(const WCHAR* text) const {
        SendMessageW(Driver().Editor(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    void Select(HTREEITEM item) const {
        SendMessageW(m_tree->TreeWindow(), TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item));
        PumpMessages();
    }

    HostDialog m_host;
    std::unique_ptr<CPropTree> m_tree = std::make_unique<CPropTree>();
    HTREEITEM m_group = nullptr;
    HTREEITEM m_name = nullptr;
    HTREEITEM m_flag = nullptr;
    HTREEITEM m_choice = nullptr;
};

} // namespace ui_test

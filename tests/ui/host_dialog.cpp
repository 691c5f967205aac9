#include "tests/ui/host_dialog.h"

#include <gtest/gtest.h>

#include "tests/ui/host.h"
#include "tests/ui/real_input.h"

namespace ui_test {

HostDialog::HostDialog() {
    m_window =
        CreateDialogParamW(nullptr, MAKEINTRESOURCEW(IDD_HOST), nullptr, DialogProc, reinterpret_cast<LPARAM>(this));
    EXPECT_NE(nullptr, m_window) << GetLastError();
    SetForegroundWindow(m_window);
    PumpMessages();
}

HostDialog::~HostDialog() {
    DestroyWindow(m_window);
    PumpMessages();
}

RECT HostDialog::PageArea() const {
    RECT area{};
    GetWindowRect(GetDlgItem(m_window, IDC_PAGE_AREA), &area);
    MapWindowPoints(nullptr, m_window, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

INT_PTR CALLBACK HostDialog::DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        return TRUE;
    }
    auto* const host = reinterpret_cast<HostDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    if (host == nullptr) {
        return FALSE;
    }
    const auto* const notification = message == WM_NOTIFY ? reinterpret_cast<const NMHDR*>(lParam) : nullptr;
    if (notification != nullptr && notification->code == 0) {
        ++host->m_valueChanges;
        host->m_lastSender = notification->hwndFrom;
    }
    if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
        ++host->m_commands;
    }
    return FALSE;
}

} // namespace ui_test

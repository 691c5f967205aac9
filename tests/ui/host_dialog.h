// HostDialog: a frame for one page or tree: a dialog with the buttons OK and Cancel below the place for it. It records
// what the tree tells its parent.
//
// Units: pixels. Owner: the test. Threads: the one that made it, which pumps its messages.
// Errors: a window that cannot be made fails the running test.
#pragma once

#include "win/platform.h"

namespace ui_test {

class HostDialog {
  public:
    HostDialog();
    ~HostDialog();
    HostDialog(const HostDialog&) = delete;
    HostDialog& operator=(const HostDialog&) = delete;

    [[nodiscard]] HWND Window() const { return m_window; }
    [[nodiscard]] HWND OkButton() const { return GetDlgItem(m_window, IDOK); }
    // Where the page goes, above the buttons.
    [[nodiscard]] RECT PageArea() const;
    // How often OK or Cancel was pressed, by button or by key.
    [[nodiscard]] int Commands() const { return m_commands; }
    // Notifications of code 0, and the window that sent the last one.
    [[nodiscard]] int ValueChanges() const { return m_valueChanges; }
    [[nodiscard]] HWND LastSender() const { return m_lastSender; }

  private:
    static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_window = nullptr;
    int m_commands = 0;
    int m_valueChanges = 0;
    HWND m_lastSender = nullptr;
};

} // namespace ui_test

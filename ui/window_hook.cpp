#include "ui/window_hook.h"

#include <utility>

void CWindowHook::Install(HWND window, LONG_PTR owner, WNDPROC procedure) {
    m_window = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, owner);
    m_own =
        win::FromMessageValue<WNDPROC>(SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

WNDPROC CWindowHook::Release() {
    const WNDPROC own = std::exchange(m_own, nullptr);
    if (const HWND window = std::exchange(m_window, nullptr)) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(own));
    }
    return own;
}

LRESULT CWindowHook::Ask(UINT message, WPARAM wParam, LPARAM lParam) const {
    return m_window != nullptr ? CallWindowProcW(m_own, m_window, message, wParam, lParam) : 0;
}

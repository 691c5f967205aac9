// CWindowHook: lets an object answer the messages of one of the system's windows, with the window's own procedure
// behind it ("subclassing").
//
// Owner: that object, which the window's user data points at. The hook ends with it, or before with the window.
// Threads: the window's. Errors: what the object throws ends the process; it guards itself where it may throw.
#pragma once

#include "win/message_value.h"
#include "win/platform.h"

class CWindowHook {
  public:
    CWindowHook() = default;
    ~CWindowHook() { Release(); }
    CWindowHook(const CWindowHook&) = delete;
    CWindowHook& operator=(const CWindowHook&) = delete;

    // From here on LRESULT OnMessage(HWND, UINT, WPARAM, LPARAM) of the owner answers. WM_DESTROY ends the hook
    // instead, and void OnDestroyed() is told before the window is. Hook is the owner's member that this is.
    template <auto Hook, auto OnMessage, auto OnDestroyed, typename Owner>
    void Set(HWND window, Owner& owner) {
        Install(window, reinterpret_cast<LONG_PTR>(&owner), &Procedure<Hook, OnMessage, OnDestroyed, Owner>);
    }
    // Gives the window its own procedure back, which is also the answer.
    WNDPROC Release();

    // Null without one.
    [[nodiscard]] HWND Window() const { return m_window; }
    // The window's own answer, past the owner; 0 without a window.
    LRESULT Ask(UINT message, WPARAM wParam, LPARAM lParam) const;
    // Whether the owner has the window still: a message may have ended both.
    template <typename Owner>
    [[nodiscard]] static bool IsOf(HWND window, const Owner* owner) {
        return OwnerOf<Owner>(window) == owner;
    }

  private:
    template <typename Owner>
    [[nodiscard]] static Owner* OwnerOf(HWND window) {
        return win::FromMessageValue<Owner*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    }

    template <auto Hook, auto OnMessage, auto OnDestroyed, typename Owner>
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
        Owner* const owner = OwnerOf<Owner>(window);
        if (owner == nullptr) {
            return DefWindowProcW(window, message, wParam, lParam);
        }
        if (message == WM_DESTROY) {
            const WNDPROC own = (owner->*Hook).Release();
            (owner->*OnDestroyed)();
            return CallWindowProcW(own, window, message, wParam, lParam);
        }
        return (owner->*OnMessage)(window, message, wParam, lParam);
    }

    void Install(HWND window, LONG_PTR owner, WNDPROC procedure);

    HWND m_window = nullptr;
    WNDPROC m_own = nullptr; // the procedure that the window had
};

#include "tests/ui/real_input.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

namespace ui_test {

namespace {

// What is waited for comes at once; this is for the case that it never does.
constexpr auto kPatience = std::chrono::minutes(2);
// Input is in the queue when SendInput returns. This is for what the screen's server still has to say about it.
constexpr DWORD kQuietMs = 30;

void Send(std::vector<INPUT> inputs) {
    for (INPUT& input : inputs) {
        EXPECT_EQ(1u, SendInput(1, &input, sizeof(input)));
    }
}

INPUT Key(WORD virtualKey, DWORD flags) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = virtualKey;
    input.ki.wScan = static_cast<WORD>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = flags;
    return input;
}

// Each event carries its position: between two of them the X server may still report where the pointer was before.
INPUT Mouse(HWND window, POINT position, DWORD flags, DWORD data = 0) {
    constexpr int kWhole = 65535;
    ClientToScreen(window, &position);
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dx = MulDiv(position.x, kWhole, GetSystemMetrics(SM_CXSCREEN) - 1);
    input.mi.dy = MulDiv(position.y, kWhole, GetSystemMetrics(SM_CYSCREEN) - 1);
    input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE | flags;
    input.mi.mouseData = data;
    return input;
}

bool Patiently(const std::function<bool()>& condition, const std::function<void()>& meanwhile) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        meanwhile();
    }
    return true;
}

} // namespace

void PumpMessages() {
    do {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            const HWND root = message.hwnd != nullptr ? GetAncestor(message.hwnd, GA_ROOT) : nullptr;
            if (root == nullptr || !IsDialogMessageW(root, &message)) {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
    } while (MsgWaitForMultipleObjects(0, nullptr, FALSE, kQuietMs, QS_ALLINPUT) != WAIT_TIMEOUT);
}

bool PumpUntil(const std::function<bool()>& condition) {
    PumpMessages();
    return Patiently(condition, PumpMessages);
}

bool WaitUntil(const std::function<bool()>& condition) {
    return Patiently(condition, [] { std::this_thread::sleep_for(std::chrono::milliseconds(10)); });
}

bool WaitForFocus(HWND window) {
    const DWORD thread = GetWindowThreadProcessId(window, nullptr);
    return WaitUntil([&] {
        GUITHREADINFO info{};
        info.cbSize = sizeof(info);
        return GetGUIThreadInfo(thread, &info) && info.hwndFocus == window;
    });
}

void PressKey(WORD virtualKey, WORD modifier) {
    if (modifier != 0) {
        Send({Key(modifier, 0)});
    }
    Send({Key(virtualKey, 0), Key(virtualKey, KEYEVENTF_KEYUP)});
    if (modifier != 0) {
        Send({Key(modifier, KEYEVENTF_KEYUP)});
    }
}

void TypeText(const std::wstring& text) {
    for (const WCHAR unit : text) {
        INPUT input{};
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = unit;
        input.ki.dwFlags = KEYEVENTF_UNICODE;
        INPUT release = input;
        release.ki.dwFlags |= KEYEVENTF_KEYUP;
        Send({input, release});
    }
}

void ClickAt(HWND window, POINT position) {
    Send({Mouse(window, position, MOUSEEVENTF_LEFTDOWN), Mouse(window, position, MOUSEEVENTF_LEFTUP)});
}

void DragFromTo(HWND window, POINT from, POINT to) {
    const POINT between{(from.x + to.x) / 2, (from.y + to.y) / 2};
    Send({Mouse(window, from, MOUSEEVENTF_LEFTDOWN), Mouse(window, between, 0), Mouse(window, to, 0),
          Mouse(window, to, MOUSEEVENTF_LEFTUP)});
}

void TurnWheel(HWND window, POINT position, int notches) {
    Send({Mouse(window, position, MOUSEEVENTF_WHEEL, static_cast<DWORD>(notches * WHEEL_DELTA))});
}

POINT MiddleOf(const RECT& area) {
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

std::wstring TextOf(HWND window) {
    const LRESULT length = SendMessageW(window, WM_GETTEXTLENGTH, 0, 0);
    std::wstring text(static_cast<size_t>(length) + 1, L'\0');
    const LRESULT copied = SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(copied));
    return text;
}

std::wstring ClassOf(HWND window) {
    WCHAR name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

} // namespace ui_test

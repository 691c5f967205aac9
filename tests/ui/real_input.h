// Keys and mouse as the user moves them: SendInput, and a message loop that lets windows react.
//
// Units: pixels of a window's client area. Threads: a window's own thread pumps; input may come from any.
// Errors: input that the system refuses fails the running test.
#pragma once

#include <functional>
#include <string>

#include "win/platform.h"

namespace ui_test {

// Dispatches what waits, dialog keys included, until nothing has come for a moment.
void PumpMessages();
// Pumps until the condition holds; false when it does not within minutes.
bool PumpUntil(const std::function<bool()>& condition);
// The same for a thread whose windows are another's.
bool WaitUntil(const std::function<bool()>& condition);
// Waits until the window, which is another thread's, has the keys.
bool WaitForFocus(HWND window);

// Each key goes down and up; a modifier is held meanwhile.
void PressKey(WORD virtualKey, WORD modifier = 0);
void TypeText(const std::wstring& text);
void ClickAt(HWND window, POINT position);
void DragFromTo(HWND window, POINT from, POINT to);
// One notch is 120; negative scrolls down.
void TurnWheel(HWND window, POINT position, int notches);

[[nodiscard]] POINT MiddleOf(const RECT& area);
// A control's text, asked of its own thread.
[[nodiscard]] std::wstring TextOf(HWND window);
[[nodiscard]] std::wstring ClassOf(HWND window);

} // namespace ui_test

#include "ui/page_area.h"

bool IsLayoutMessage(HWND page, UINT message) {
    if (message == WM_SIZE) {
        PostMessageW(page, kFrameHasSettled, 0, 0);
    }
    return message == WM_SIZE || message == kFrameHasSettled;
}

RECT VisibleAreaOf(HWND page) {
    RECT own{};
    GetClientRect(page, &own);
    const HWND parent = GetParent(page);
    RECT shown{};
    GetClientRect(parent, &shown);
    MapWindowPoints(parent, page, reinterpret_cast<POINT*>(&shown), 2);
    RECT visible{};
    return IntersectRect(&visible, &own, &shown) ? visible : own; // a parent without a size says nothing
}

#include "tests/ui/picture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ui_test {

namespace {

// No window has it: what stays so was not painted.
constexpr COLORREF kUntouched = RGB(255, 0, 255);

} // namespace

Picture Picture::OfScreen(HWND window) {
    UpdateWindow(window);
    return {window, [window](HDC to, const RECT& client) {
                const HDC screen = GetDC(window);
                EXPECT_TRUE(BitBlt(to, 0, 0, client.right, client.bottom, screen, 0, 0, SRCCOPY));
                ReleaseDC(window, screen);
            }};
}

Picture Picture::OfPrint(HWND window) {
    return {window, [window](HDC to, const RECT&) {
                SendMessageW(window, WM_PRINTCLIENT, reinterpret_cast<WPARAM>(to), PRF_CLIENT | PRF_ERASEBKGND);
            }};
}

Picture Picture::OfPaint(HWND window) {
    return {window, [window](HDC to, const RECT&) { SendMessageW(window, WM_PAINT, reinterpret_cast<WPARAM>(to), 0); }};
}

Picture Picture::OfText(HWND window, const std::wstring& text) {
    return {window, [&](HDC to, const RECT& client) {
                FillRect(to, &client, GetSysColorBrush(COLOR_WINDOW));
                const HGDIOBJ font = SelectObject(to, reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)));
                SetTextColor(to, GetSysColor(COLOR_WINDOWTEXT));
                SetBkMode(to, TRANSPARENT);
                TextOutW(to, 5, 5, text.c_str(), static_cast<int>(text.size()));
                SelectObject(to, font);
            }};
}

Picture::Picture(HWND window, const Draw& draw) {
    RECT client{};
    GetClientRect(window, &client);
    m_width = client.right;
    m_height = client.bottom;
    BITMAPINFO format{};
    format.bmiHeader = {sizeof(BITMAPINFOHEADER), m_width, -m_height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    const HDC memory = CreateCompatibleDC(nullptr);
    const HBITMAP bitmap = CreateDIBSection(memory, &format, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    const HBRUSH untouched = CreateSolidBrush(kUntouched);
    FillRect(memory, &client, untouched);
    draw(memory, client);
    GdiFlush();
    const auto* const pixels = static_cast<const RGBQUAD*>(bits);
    std::transform(pixels, pixels + static_cast<ptrdiff_t>(m_width) * m_height, std::back_inserter(m_pixels),
                   [](const RGBQUAD& pixel) { return RGB(pixel.rgbRed, pixel.rgbGreen, pixel.rgbBlue); });
    SelectObject(memory, previous);
    DeleteObject(untouched);
    DeleteObject(bitmap);
    DeleteDC(memory);
}

std::vector<COLORREF> Picture::Part(const RECT& area) const {
    std::vector<COLORREF> part;
    for (LONG y = area.top; y < area.bottom; ++y) {
        const auto row = m_pixels.begin() + static_cast<ptrdiff_t>(y) * m_width;
        part.insert(part.end(), row + area.left, row + area.right);
    }
    return part;
}

std::optional<RECT> Picture::Ink(const RECT& area) const {
    const COLORREF background = GetSysColor(COLOR_WINDOW);
    std::optional<RECT> ink;
    for (LONG y = area.top; y < area.bottom; ++y) {
        for (LONG x = area.left; x < area.right; ++x) {
            if (m_pixels[static_cast<size_t>(y) * static_cast<size_t>(m_width) + static_cast<size_t>(x)] !=
                background) {
                RECT pixel{x, y, x + 1, y + 1};
                const RECT before = ink.value_or(pixel);
                ink.emplace();
                UnionRect(&*ink, &before, &pixel);
            }
        }
    }
    return ink;
}

} // namespace ui_test

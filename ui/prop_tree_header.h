// CPropTreeHeader: the header above a property tree, whose columns "Name" and "Value" share its width.
//
// Units: pixels. Owner: CPropTree; the window is destroyed with it, or before it with its parent.
// Threads: the window's. Errors: without a window there is no width and no column.
#pragma once

#include <functional>

#include "ui/window_hook.h"
#include "win/platform.h"

class CPropTreeHeader {
  public:
    // The columns have other widths, by the user's hand or ours.
    using WidthsHandler = std::function<void()>;

    explicit CPropTreeHeader(WidthsHandler onWidths) : m_onWidths(std::move(onWidths)) {}
    ~CPropTreeHeader();
    CPropTreeHeader(const CPropTreeHeader&) = delete;
    CPropTreeHeader& operator=(const CPropTreeHeader&) = delete;

    // At the top of the rectangle of the parent, whose font it gets.
    bool Create(HWND parent, const RECT& area);
    // To the top of another rectangle; the columns keep their proportion.
    void Resize(const RECT& area);

    [[nodiscard]] HWND Window() const { return m_hook.Window(); }
    [[nodiscard]] int Height() const;
    // Where the "Value" column is in the header; false without a header.
    [[nodiscard]] bool ValueColumn(RECT& column) const;

  private:
    LRESULT OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void OnDestroyed() {}
    void FollowDivider();
    [[nodiscard]] int Width() const;
    void SetNameWidth(int width);

    CWindowHook m_hook;
    int m_nameWidth = 0;
    WidthsHandler m_onWidths;
};

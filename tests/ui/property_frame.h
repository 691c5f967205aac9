// PropertyFrame: the system's own property frame around the muxer's pages, on a thread of its own.
//
// Owner: the test; the frame is cancelled at the end if it is still open. Threads: any but the frame's own.
// Errors: a frame that does not open or close fails the running test.
#pragma once

#include <string>
#include <thread>

#include "tests/ui/tree_driver.h"

namespace ui_test {

class PropertyFrame {
  public:
    // Shows the pages that the object names itself.
    explicit PropertyFrame(IUnknown* object);
    ~PropertyFrame();
    PropertyFrame(const PropertyFrame&) = delete;
    PropertyFrame& operator=(const PropertyFrame&) = delete;

    [[nodiscard]] HWND Window() const { return m_window; }
    // The titles on the tabs.
    [[nodiscard]] std::vector<std::wstring> Titles() const;
    // Clicks the tab.
    void ShowPage(const std::wstring& title) const;
    [[nodiscard]] TreeDriver Tree() const { return TreeDriver::Below(m_window); }
    [[nodiscard]] HWND Button(int id) const { return GetDlgItem(m_window, id); }
    void Click(int id) const;
    // Presses Apply. Wine's frame never enables that button, nor does it ever ask a page to apply, OK pressed or not:
    // then the settings page is asked here, on the frame's thread, as the frame of Windows asks it.
    void Apply();
    // Waits until everything is done and on the screen.
    void Paint() const;
    // Waits until the frame is gone; what OleCreatePropertyFrame answered.
    HRESULT WaitForEnd();

    static constexpr int kApplyButton = 0x3021;

  private:
    class PageKeeper; // the factory of the settings page, which keeps what it makes

    [[nodiscard]] HWND Tabs() const;
    void Run(IUnknown* object);
    // Waits until the frame has done what it has to do.
    void Settle() const;
    void RunOnFrameThread(const std::function<void()>& call) const;

    HWND m_window = nullptr;
    HWND m_caller = nullptr;        // of the frame's thread; runs what is sent to it
    PageKeeper* m_keeper = nullptr; // lives while the frame's thread runs
    HRESULT m_result = E_PENDING;
    std::thread m_thread;
};

} // namespace ui_test

#include "tests/ui/property_frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include <olectl.h>

#include <qrx_mkvmuxer.h>

#include "win/com_ptr.h"

namespace ui_test {

namespace {

constexpr const WCHAR* kCaption = L"Quorlex Matroska Muxer";

HWND FindFrame() {
    // The frame adds a word of its own to the caption it is given.
    for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, L"#32770", nullptr)) != nullptr;) {
        if (TextOf(window).find(kCaption) != std::wstring::npos && IsWindowVisible(window)) {
            return window;
        }
    }
    return nullptr;
}

constexpr UINT kRunCall = WM_APP;
constexpr UINT kMark = WM_APP + 1;

LRESULT CALLBACK CallerProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == kRunCall) {
        (*reinterpret_cast<const std::function<void()>*>(lParam))();
        return 0;
    }
    if (message == kMark) {
        reinterpret_cast<std::atomic<bool>*>(lParam)->store(true);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND CreateCaller() {
    const HWND caller = CreateWindowExW(0, L"STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(caller, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(CallerProc));
    return caller;
}

} // namespace

class PropertyFrame::PageKeeper final : public IClassFactory {
  public:
    explicit PageKeeper(win::ComPtr<IClassFactory> real) : m_real(std::move(real)) {
        EXPECT_EQ(S_OK, CoRegisterClassObject(CLSID_MKVMuxerPropertyPage, this, CLSCTX_INPROC_SERVER,
                                              REGCLS_MULTIPLEUSE, &m_cookie));
    }
    ~PageKeeper() { CoRevokeClassObject(m_cookie); }
    [[nodiscard]] IPropertyPage* Page() const { return m_page.Get(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
        return *object != nullptr ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        const HRESULT hr = m_real->CreateInstance(outer, IID_IPropertyPage, m_page.PutVoid());
        return SUCCEEDED(hr) ? m_page->QueryInterface(iid, object) : hr;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  private:
    win::ComPtr<IClassFactory> m_real;
    win::ComPtr<IPropertyPage> m_page;
    DWORD m_cookie = 0;
};

PropertyFrame::PropertyFrame(IUnknown* object) : m_thread([this, object] { Run(object); }) {
    EXPECT_TRUE(WaitUntil([this] { return (m_window = FindFrame()) != nullptr; }));
    SetForegroundWindow(m_window);
    Settle();
}

PropertyFrame::~PropertyFrame() {
    if (IsWindow(m_window)) {
        Click(IDCANCEL);
    }
    WaitForEnd();
}

void PropertyFrame::Run(IUnknown* object) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    m_caller = CreateCaller();
    {
        // From the registry, before the keeper stands in its place.
        win::ComPtr<IClassFactory> real;
        EXPECT_EQ(S_OK, CoGetClassObject(CLSID_MKVMuxerPropertyPage, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                                         real.PutVoid()));
        PageKeeper keeper(real);
        m_keeper = &keeper;
        win::ComPtr<ISpecifyPropertyPages> specifies;
        CAUUID pages{};
        EXPECT_EQ(S_OK, object->QueryInterface(IID_ISpecifyPropertyPages, specifies.PutVoid()));
        EXPECT_EQ(S_OK, specifies->GetPages(&pages));
        m_result = OleCreatePropertyFrame(nullptr, 20, 20, kCaption, 1, &object, pages.cElems, pages.pElems,
                                          LOCALE_USER_DEFAULT, 0, nullptr);
        CoTaskMemFree(pages.pElems);
    }
    DestroyWindow(m_caller);
    CoUninitialize();
}

void PropertyFrame::RunOnFrameThread(const std::function<void()>& call) const {
    SendMessageW(m_caller, kRunCall, 0, reinterpret_cast<LPARAM>(&call));
}

void PropertyFrame::Apply() {
    if (IsWindowEnabled(Button(kApplyButton))) {
        Click(kApplyButton);
        return;
    }
    RunOnFrameThread([this] {
        EXPECT_EQ(S_OK, m_keeper->Page()->IsPageDirty());
        EXPECT_EQ(S_OK, m_keeper->Page()->Apply());
    });
}

void PropertyFrame::Paint() const {
    Settle();
    RunOnFrameThread([this] {
        RedrawWindow(m_window, nullptr, nullptr,
                     RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
        GdiFlush();
    });
}

HWND PropertyFrame::Tabs() const {
    return FindWindowExW(m_window, nullptr, WC_TABCONTROLW, nullptr);
}

std::vector<std::wstring> PropertyFrame::Titles() const {
    std::vector<std::wstring> titles;
    const LRESULT count = SendMessageW(Tabs(), TCM_GETITEMCOUNT, 0, 0);
    for (LRESULT index = 0; index < count; ++index) {
        WCHAR text[64] = {};
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = text;
        item.cchTextMax = 64;
        SendMessageW(Tabs(), TCM_GETITEMW, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&item));
        titles.emplace_back(text);
    }
    return titles;
}

void PropertyFrame::ShowPage(const std::wstring& title) const {
    const auto titles = Titles();
    const auto index = std::find(titles.begin(), titles.end(), title) - titles.begin();
    RECT area{};
    EXPECT_TRUE(SendMessageW(Tabs(), TCM_GETITEMRECT, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(&area)));
    ClickAt(Tabs(), MiddleOf(area));
    EXPECT_TRUE(WaitUntil([&] { return SendMessageW(Tabs(), TCM_GETCURSEL, 0, 0) == index; }));
    Settle();
}

// A page lays itself out once more when the frame has settled, with a message that it posts. The first mark comes back
// when the frame is done with what it was at, the second one behind what was posted by then.
void PropertyFrame::Settle() const {
    for (int mark = 0; mark < 2; ++mark) {
        static std::atomic<bool> isBack;
        isBack = false;
        PostMessageW(m_caller, kMark, 0, reinterpret_cast<LPARAM>(&isBack));
        EXPECT_TRUE(WaitUntil([] { return isBack.load(); }));
    }
}

void PropertyFrame::Click(int id) const {
    RECT area{};
    GetClientRect(Button(id), &area);
    ClickAt(Button(id), MiddleOf(area));
}

HRESULT PropertyFrame::WaitForEnd() {
    EXPECT_TRUE(WaitUntil([this] { return !IsWindow(m_window); }));
    if (m_thread.joinable()) {
        m_thread.join();
    }
    return m_result;
}

} // namespace ui_test

#include "dshow/base_property_page.h"

#include <cwchar>

#include "dshow/com_guard.h"
#include "win/message_value.h"
#include "win/module_instance.h"

namespace {

const WCHAR* ResourceName(int id) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the platform takes identifiers as pointers
    return reinterpret_cast<const WCHAR*>(static_cast<ULONG_PTR>(id));
}

// A copy for the caller, who frees it with CoTaskMemFree; null when memory is short. Empty for a missing string.
WCHAR* CopyOfString(int id) {
    const WCHAR* text = nullptr;
    // With no room given, the answer is where the string lies in the module, and its length.
    const int found = LoadStringW(win::ModuleInstance(), static_cast<UINT>(id), reinterpret_cast<WCHAR*>(&text), 0);
    const size_t length = found > 0 ? static_cast<size_t>(found) : 0;
    auto* const copy = static_cast<WCHAR*>(CoTaskMemAlloc((length + 1) * sizeof(WCHAR)));
    if (copy != nullptr) {
        std::wmemcpy(copy, length > 0 ? text : OLESTR(""), length);
        copy[length] = 0;
    }
    return copy;
}

INT_PTR CALLBACK IgnoreMessages(HWND /*hwnd*/, UINT /*message*/, WPARAM /*wParam*/, LPARAM /*lParam*/) {
    return FALSE;
}

// In pixels, as the template comes out with its font on this screen; empty when there is no such template.
SIZE SizeOfDialog(int id) {
    const HWND dialog =
        CreateDialogParamW(win::ModuleInstance(), ResourceName(id), GetDesktopWindow(), IgnoreMessages, 0);
    RECT area{};
    if (dialog != nullptr) {
        GetWindowRect(dialog, &area);
        DestroyWindow(dialog);
    }
    return {area.right - area.left, area.bottom - area.top};
}

} // namespace

CBasePropertyPage::CBasePropertyPage(const WCHAR* pName, LPUNKNOWN pUnk, int DialogId, int TitleId)
    : CUnknown(pName, pUnk), m_TitleId(TitleId), m_DialogId(DialogId) {}

CBasePropertyPage::~CBasePropertyPage() {
    DestroyDialogWindow(); // its procedure must not meet a page that is gone
}

HRESULT CBasePropertyPage::NonDelegatingQueryInterface(REFIID riid, void** ppv) {
    if (riid == IID_IPropertyPage) {
        return GetInterface(static_cast<IPropertyPage*>(this), ppv);
    }
    return CUnknown::NonDelegatingQueryInterface(riid, ppv);
}

HRESULT CBasePropertyPage::SetPageSite(IPropertyPageSite* pPageSite) noexcept {
    if ((pPageSite != nullptr) == static_cast<bool>(m_pPageSite)) {
        return E_UNEXPECTED; // a second site, or none to let go of
    }
    m_pPageSite = pPageSite;
    return S_OK;
}

HRESULT CBasePropertyPage::Activate(HWND hwndParent, LPCRECT pRect, BOOL /*bModal*/) noexcept {
    if (pRect == nullptr) {
        return E_POINTER;
    }
    if (!m_bObjectSet || m_hwnd != nullptr) {
        return E_UNEXPECTED;
    }
    HRESULT hr = ComGuard([&] { return CreateDialogWindow(hwndParent); });
    if (SUCCEEDED(hr)) {
        hr = ComGuard([this] { return OnActivate(); });
    }
    if (FAILED(hr)) {
        Deactivate();
        return hr;
    }
    Move(pRect);
    return Show(SW_SHOWNORMAL);
}

HRESULT CBasePropertyPage::CreateDialogWindow(HWND parent) {
    m_hwnd = CreateDialogParamW(win::ModuleInstance(), ResourceName(m_DialogId), parent, DialogProc,
                                reinterpret_cast<LPARAM>(this));
    if (m_hwnd == nullptr) {
        const DWORD error = GetLastError();
        return error != ERROR_SUCCESS ? HRESULT_FROM_WIN32(error) : E_FAIL;
    }
    return S_OK;
}

HRESULT CBasePropertyPage::Deactivate() noexcept {
    if (m_hwnd == nullptr) {
        return E_UNEXPECTED;
    }
    const HRESULT hr = ComGuard([this] { return OnDeactivate(); });
    DestroyDialogWindow();
    return hr;
}

void CBasePropertyPage::DestroyDialogWindow() {
    if (m_hwnd != nullptr) {
        DestroyWindow(m_hwnd); // WM_NCDESTROY clears the handles
    }
}

HRESULT CBasePropertyPage::GetPageInfo(PROPPAGEINFO* pPageInfo) noexcept {
    if (pPageInfo == nullptr) {
        return E_POINTER;
    }
    *pPageInfo = {};
    pPageInfo->cb = sizeof(PROPPAGEINFO);
    pPageInfo->pszTitle = CopyOfString(m_TitleId);
    if (pPageInfo->pszTitle == nullptr) {
        return E_OUTOFMEMORY;
    }
    pPageInfo->size = SizeOfDialog(m_DialogId);
    return S_OK;
}

HRESULT CBasePropertyPage::SetObjects(ULONG cObjects, IUnknown** ppUnk) noexcept {
    if (cObjects > 1) {
        return E_UNEXPECTED; // a page is for one filter
    }
    if (cObjects == 1 && (ppUnk == nullptr || *ppUnk == nullptr)) {
        return E_POINTER;
    }
    if (m_bObjectSet) {
        m_bObjectSet = FALSE;
        const HRESULT left = ComGuard([this] { return OnDisconnect(); });
        if (FAILED(left)) {
            return left;
        }
    }
    if (cObjects == 0) {
        return S_OK;
    }
    const HRESULT hr = ComGuard([&] { return OnConnect(*ppUnk); });
    m_bObjectSet = SUCCEEDED(hr);
    return hr;
}

HRESULT CBasePropertyPage::Show(UINT nCmdShow) noexcept {
    if (m_hwnd == nullptr) {
        return E_UNEXPECTED;
    }
    if (nCmdShow != SW_SHOW && nCmdShow != SW_SHOWNORMAL && nCmdShow != SW_HIDE) {
        return E_INVALIDARG;
    }
    ShowWindow(m_hwnd, static_cast<int>(nCmdShow));
    InvalidateRect(m_hwnd, nullptr, TRUE);
    return S_OK;
}

HRESULT CBasePropertyPage::Move(LPCRECT pRect) noexcept {
    if (pRect == nullptr) {
        return E_POINTER;
    }
    if (m_hwnd == nullptr) {
        return E_UNEXPECTED;
    }
    MoveWindow(m_hwnd, pRect->left, pRect->top, pRect->right - pRect->left, pRect->bottom - pRect->top, TRUE);
    return S_OK;
}

HRESULT CBasePropertyPage::IsPageDirty() noexcept {
    return m_bDirty ? S_OK : S_FALSE;
}

HRESULT CBasePropertyPage::Apply() noexcept {
    if (!m_bObjectSet || !m_pPageSite) {
        return E_UNEXPECTED;
    }
    if (!m_bDirty) {
        return S_OK;
    }
    const HRESULT hr = ComGuard([this] { return OnApplyChanges(); });
    if (SUCCEEDED(hr)) {
        m_bDirty = FALSE;
    }
    return hr;
}

void CBasePropertyPage::SetDirty() {
    m_bDirty = TRUE;
    if (m_pPageSite) {
        m_pPageSite->OnStatusChange(PROPPAGESTATUS_DIRTY);
    }
}

INT_PTR CBasePropertyPage::OnReceiveMessage(HWND /*hwnd*/, UINT uMsg, WPARAM wParam, LPARAM lParam) {
    // A frame may clear this style on its page, and the Tab key would then pass the page's controls by.
    if (uMsg == WM_STYLECHANGING && static_cast<int>(wParam) == GWL_EXSTYLE && lParam != 0) {
        win::FromMessageValue<STYLESTRUCT*>(lParam)->styleNew |= WS_EX_CONTROLPARENT;
    }
    return FALSE;
}

INT_PTR CALLBACK CBasePropertyPage::DialogProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept {
    if (uMsg == WM_INITDIALOG) {
        SetWindowLongPtrW(hwnd, DWLP_USER, lParam);
        win::FromMessageValue<CBasePropertyPage*>(lParam)->m_Dlg = hwnd;
    }
    auto* const page = win::FromMessageValue<CBasePropertyPage*>(GetWindowLongPtrW(hwnd, DWLP_USER));
    if (page == nullptr) {
        return FALSE;
    }
    if (uMsg == WM_NCDESTROY) {
        // The host may destroy its window, and the page's with it, without deactivating the page first.
        SetWindowLongPtrW(hwnd, DWLP_USER, 0);
        page->m_hwnd = nullptr;
        page->m_Dlg = nullptr;
        return FALSE;
    }
    INT_PTR handled = FALSE;
    // An exception must not cross the system's frames; a message that failed counts as not handled.
    (void)ComGuard([&] {
        handled = page->OnReceiveMessage(hwnd, uMsg, wParam, lParam);
        return S_OK;
    });
    return handled;
}

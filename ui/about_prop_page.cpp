#include "ui/about_prop_page.h"

#include <algorithm>
#include <new>

#include "ui/page_area.h"
#include "ui/resource.h"
#include "win/module_instance.h"
#include "win/module_version.h"

namespace {

constexpr const WCHAR* kProductName = L"Quorlex Matroska Muxer";
constexpr int kTextControls[] = {IDC_PRODUCT_NAME, IDC_VERSION, IDC_PURPOSE, IDC_LICENCE};

RECT AreaInDialog(HWND dialog, HWND control) {
    RECT area{};
    GetWindowRect(control, &area);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

} // namespace

CUnknown* CAboutPropPage::CreateInstance(LPUNKNOWN outer, HRESULT* phr) {
    CUnknown* const page = new (std::nothrow) CAboutPropPage(outer); // counted from 0: its first reference owns it
    if (page == nullptr) {
        *phr = E_OUTOFMEMORY;
    }
    return page;
}

CAboutPropPage::CAboutPropPage(LPUNKNOWN outer)
    : CBasePropertyPage(OLESTR("Quorlex Matroska Muxer Filter About Property Page"), outer, IDD_ABOUT_PAGE,
                        IDS_ABOUT_TITLE) {}

CAboutPropPage::~CAboutPropPage() = default;

HRESULT CAboutPropPage::OnActivate() {
    SetDlgItemTextW(m_Dlg, IDC_PRODUCT_NAME, kProductName);
    const std::string version = win::ModuleVersionText();
    SetDlgItemTextW(m_Dlg, IDC_VERSION, std::wstring(version.begin(), version.end()).c_str());
    ShowPicture();
    return S_OK;
}

// In the size of its control, so that it is sharp at every resolution.
void CAboutPropPage::ShowPicture() {
    const HWND control = GetDlgItem(m_Dlg, IDC_PICTURE);
    RECT area{};
    GetClientRect(control, &area);
    const int side = static_cast<int>(std::min(area.right, area.bottom));
    m_picture.Reset(static_cast<HICON>(
        LoadImageW(win::ModuleInstance(), MAKEINTRESOURCEW(IDI_MUXER), IMAGE_ICON, side, side, LR_DEFAULTCOLOR)));
    SendMessageW(control, STM_SETICON, reinterpret_cast<WPARAM>(m_picture.Get()), 0);
}

HRESULT CAboutPropPage::OnDeactivate() {
    SendDlgItemMessageW(m_Dlg, IDC_PICTURE, STM_SETICON, 0, 0);
    m_picture.Reset();
    return S_OK;
}

// The texts reach to the page's edge, whatever its width; the margin on the right is the picture's on the left.
void CAboutPropPage::WidenTexts() const {
    const LONG edge = VisibleAreaOf(m_Dlg).right;
    const LONG margin = AreaInDialog(m_Dlg, GetDlgItem(m_Dlg, IDC_PICTURE)).left;
    for (const int id : kTextControls) {
        const HWND control = GetDlgItem(m_Dlg, id);
        const RECT area = AreaInDialog(m_Dlg, control);
        const LONG width = std::max(0L, edge - margin - area.left);
        SetWindowPos(control, nullptr, 0, 0, width, area.bottom - area.top, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    }
}

INT_PTR CAboutPropPage::OnReceiveMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    if (hwnd == m_Dlg && IsLayoutMessage(hwnd, message)) {
        WidenTexts();
    }
    return CBasePropertyPage::OnReceiveMessage(hwnd, message, wParam, lParam);
}

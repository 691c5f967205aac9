#include "tests/ui/page_rig.h"

#include "tests/ui/host.h"

namespace ui_test {

PageRig::PageRig(REFCLSID page) {
    EXPECT_EQ(S_OK, m_module.Factory(page)->CreateInstance(nullptr, IID_IPropertyPage, m_page.PutVoid()));
    ShowWindow(GetDlgItem(m_host->Window(), IDC_PAGE_AREA), SW_HIDE);
}

PageRig::~PageRig() {
    m_page->SetPageSite(nullptr);
    m_page->SetObjects(0, nullptr);
    EXPECT_EQ(0u, m_page.Detach()->Release()) << "somebody still holds the page";
    EXPECT_EQ(0, m_site.References());
}

HRESULT PageRig::SetObject(IUnknown* object) {
    return m_page->SetObjects(1, &object);
}

HRESULT PageRig::Activate() {
    const RECT area = m_host->PageArea();
    return m_page->Activate(m_host->Window(), &area, FALSE);
}

void PageRig::Show(IUnknown* object) {
    ASSERT_EQ(S_OK, m_page->SetPageSite(&m_site));
    ASSERT_EQ(S_OK, SetObject(object));
    ASSERT_EQ(S_OK, Activate());
    PumpMessages();
}

HWND PageRig::Window() const {
    return FindWindowExW(m_host->Window(), nullptr, L"#32770", nullptr);
}

void PageRig::ClickValue(const std::wstring& path) const {
    Tree().ClickValue(path);
    PumpMessages();
}

void PageRig::ClickLabel(const std::wstring& path) const {
    Tree().ClickLabel(path);
    PumpMessages();
}

} // namespace ui_test

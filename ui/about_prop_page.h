// CAboutPropPage: the about page, with the product's name, the module's version and a picture.
//
// Owner: its references. Threads: the one that shows the page. Errors: HRESULTs.
#pragma once

#include "dshow/base_property_page.h"
#include "win/handle.h"

class CAboutPropPage final : public CBasePropertyPage {
  public:
    static CUnknown* CreateInstance(LPUNKNOWN outer, HRESULT* phr);

    explicit CAboutPropPage(LPUNKNOWN outer);
    ~CAboutPropPage() override;

    // CBasePropertyPage
    HRESULT OnActivate() override;
    HRESULT OnDeactivate() override;
    INT_PTR OnReceiveMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    struct IconPolicy {
        using Type = HICON;
        static Type Invalid() { return nullptr; }
        static void Close(Type icon) { DestroyIcon(icon); }
    };

    void ShowPicture();
    void WidenTexts() const;

    win::UniqueHandle<IconPolicy> m_picture; // while the page is active
};

// CBasePropertyPage: IPropertyPage over a dialog template of the module, for pages of a property frame.
//
// Owner: its references; the site is held while it is set. Threads: the one that shows the page.
// Errors: E_UNEXPECTED for a call out of turn (no object, no site, no window, a second window); what an override
// returns or throws comes back as an HRESULT.
#pragma once

#include "dshow/unknown.h"
#include "win/com_ptr.h"
#include "win/platform.h"

class CBasePropertyPage : public IPropertyPage, public CUnknown {
  public:
    // The identifiers name a dialog template and a string of the module's resources.
    CBasePropertyPage(const WCHAR* pName, LPUNKNOWN pUnk, int DialogId, int TitleId);
    ~CBasePropertyPage() override;

    // What a page overrides. OnConnect sees the object that the page is for; a failure leaves the page without one.
    virtual HRESULT OnConnect(IUnknown* /*pUnknown*/) { return S_OK; }
    virtual HRESULT OnDisconnect() { return S_OK; }
    // The dialog exists, in the template's size and not yet shown.
    virtual HRESULT OnActivate() { return S_OK; }
    virtual HRESULT OnDeactivate() { return S_OK; }
    virtual HRESULT OnApplyChanges() { return S_OK; }
    // A dialog procedure: TRUE when the message was handled.
    virtual INT_PTR OnReceiveMessage(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IPropertyPage
    STDMETHODIMP SetPageSite(IPropertyPageSite* pPageSite) noexcept override;
    STDMETHODIMP Activate(HWND hwndParent, LPCRECT pRect, BOOL bModal) noexcept override;
    STDMETHODIMP Deactivate() noexcept override;
    // Title and size; the caller frees the title with CoTaskMemFree.
    STDMETHODIMP GetPageInfo(PROPPAGEINFO* pPageInfo) noexcept override;
    // One object, or none to let go of it.
    STDMETHODIMP SetObjects(ULONG cObjects, IUnknown** ppUnk) noexcept override;
    STDMETHODIMP Show(UINT nCmdShow) noexcept override;
    STDMETHODIMP Move(LPCRECT pRect) noexcept override;
    STDMETHODIMP IsPageDirty() noexcept override;
    // Asks OnApplyChanges only on a page that is dirty, and clears the flag when that succeeds.
    STDMETHODIMP Apply() noexcept override;
    STDMETHODIMP Help(LPCOLESTR /*lpszHelpDir*/) noexcept override { return E_NOTIMPL; }
    // The frame's own dialog messages reach the page's controls.
    STDMETHODIMP TranslateAccelerator(LPMSG /*lpMsg*/) noexcept override { return E_NOTIMPL; }

  protected:
    // Marks the page and tells the site, if there is one.
    void SetDirty();

    win::ComPtr<IPropertyPageSite> m_pPageSite;
    HWND m_hwnd = nullptr; // the page's window; none while it is not active
    HWND m_Dlg = nullptr;  // the same window, known from WM_INITDIALOG on
    BOOL m_bDirty = FALSE;
    const int m_TitleId;
    const int m_DialogId;

  private:
    static INT_PTR CALLBACK DialogProc(HWND hwnd, UINT uMsg, WPARAM wParam, LPARAM lParam) noexcept;
    HRESULT CreateDialogWindow(HWND parent);
    void DestroyDialogWindow();

    BOOL m_bObjectSet = FALSE;
};

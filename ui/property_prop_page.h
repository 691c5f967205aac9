// CPropertyPropPage: the settings page. It shows the document type and, for each connected input, whether the track is
// written, its name and its language, and what strict files are told; Apply writes all back through IModuleConfig.
//
// Owner: its references; it holds the filter while it is connected to it. Threads: the one that shows the page.
// Errors: HRESULTs. Edits live in the tree alone until Apply.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "client/module_config.h"
#include "dshow/base_property_page.h"
#include "ui/option_rows.h"
#include "ui/prop_tree.h"

class CPropertyPropPage final : public CBasePropertyPage {
  public:
    static CUnknown* CreateInstance(LPUNKNOWN outer, HRESULT* phr);

    explicit CPropertyPropPage(LPUNKNOWN outer);
    ~CPropertyPropPage() override;

    // Writes what is shown, changed or not.
    STDMETHODIMP Apply() noexcept override;

    // CBasePropertyPage
    HRESULT OnConnect(IUnknown* object) override;
    HRESULT OnDisconnect() override;
    HRESULT OnActivate() override;
    HRESULT OnDeactivate() override;
    HRESULT OnApplyChanges() override;
    INT_PTR OnReceiveMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) override;

  private:
    void AddCommon();
    void ReadTracks();
    void AddToItsKind(client::TrackRow track);
    void AddGroup(const WCHAR* title, const std::vector<client::TrackRow>& tracks);
    void AddTrack(HTREEITEM group, const client::TrackRow& track);
    [[nodiscard]] const client::TrackRow* FindTrack(INT32 index) const;
    [[nodiscard]] client::TrackRow EditedTrack(HTREEITEM trackItem, INT32 index) const;
    void TakeOver(const PropTreeItem& item, client::TrackRow& track) const;

    client::ModuleConfig m_config;
    std::unique_ptr<CPropTree> m_tree; // while the page is active
    std::vector<client::TrackRow> m_videoTracks;
    std::vector<client::TrackRow> m_audioTracks;
    std::vector<client::TrackRow> m_subtitleTracks;
    std::map<HTREEITEM, INT32> m_pinItems; // "In %d" items and the inputs that they are for
    const std::vector<std::wstring> m_languageNames;
    const std::vector<std::wstring> m_docTypeNames;
    HTREEITEM m_docTypeItem = nullptr;
    COptionRows m_options;
};

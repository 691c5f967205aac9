#include "ui/property_prop_page.h"

#include <new>

#include "ui/language_names.h"
#include "ui/page_area.h"
#include "ui/resource.h"
#include "win/message_value.h"

namespace {

const std::wstring kWebm = L"webm";

const std::wstring kEnabledLabel = L"bEnabled";
const std::wstring kNameLabel = L"Track Name";
const std::wstring kLanguageLabel = L"Track Language";

} // namespace

CUnknown* CPropertyPropPage::CreateInstance(LPUNKNOWN outer, HRESULT* phr) {
    CUnknown* const page = new (std::nothrow) CPropertyPropPage(outer); // counted from 0: its first reference owns it
    if (page == nullptr) {
        *phr = E_OUTOFMEMORY;
    }
    return page;
}

CPropertyPropPage::CPropertyPropPage(LPUNKNOWN outer)
    : CBasePropertyPage(OLESTR("Quorlex Matroska Muxer Property Page"), outer, IDD_SETTINGS_PAGE, IDS_SETTINGS_TITLE),
      m_languageNames(LanguageNames()), m_docTypeNames{L"matroska", kWebm} {}

CPropertyPropPage::~CPropertyPropPage() = default;

HRESULT CPropertyPropPage::OnConnect(IUnknown* object) {
    return m_config.Connect(object);
}

HRESULT CPropertyPropPage::OnDisconnect() {
    m_config.Reset();
    return S_OK;
}

HRESULT CPropertyPropPage::OnActivate() {
    m_pinItems.clear();
    RECT client{};
    GetClientRect(m_Dlg, &client);
    m_tree = std::make_unique<CPropTree>();
    if (!m_tree->Create(m_Dlg, client)) {
        return E_FAIL;
    }
    AddCommon();
    ReadTracks();
    AddGroup(L"Video", m_videoTracks);
    AddGroup(L"Audio", m_audioTracks);
    AddGroup(L"SubTitles", m_subtitleTracks);
    m_bDirty = FALSE; // what is shown comes from the filter
    return S_OK;
}

HRESULT CPropertyPropPage::OnDeactivate() {
    m_tree.reset();
    m_pinItems.clear();
    m_docTypeItem = nullptr;
    m_options.Forget();
    return S_OK;
}

void CPropertyPropPage::AddCommon() {
    const HTREEITEM common = m_tree->AddLabel(TVI_ROOT, L"Common");
    MuxDocType docType = MuxDocType_Matroska; // which a filter that does not answer counts as
    (void)m_config.GetDocType(docType);
    m_docTypeItem = m_tree->AddList(common, L"DocType", m_docTypeNames, docType == MuxDocType_Webm ? 1 : 0);
    m_options.AddOfFile(*m_tree, common, m_config);
}

void CPropertyPropPage::ReadTracks() {
    m_videoTracks.clear();
    m_audioTracks.clear();
    m_subtitleTracks.clear();
    UINT16 inputs = 0; // as many as a filter that does not answer has
    (void)m_config.GetInputCount(inputs);
    for (INT32 index = 0; index < inputs; ++index) {
        client::TrackRow track;
        if (SUCCEEDED(m_config.GetTrack(index, track))) {
            AddToItsKind(std::move(track));
        }
    }
}

// One that is not connected is not shown.
void CPropertyPropPage::AddToItsKind(client::TrackRow track) {
    switch (track.trackType) {
    case MuxTrackType_Video:
        m_videoTracks.push_back(std::move(track));
        break;
    case MuxTrackType_Audio:
        m_audioTracks.push_back(std::move(track));
        break;
    case MuxTrackType_Subtitle:
        m_subtitleTracks.push_back(std::move(track));
        break;
    default:
        break;
    }
}

void CPropertyPropPage::AddGroup(const WCHAR* title, const std::vector<client::TrackRow>& tracks) {
    if (tracks.empty()) {
        return;
    }
    const HTREEITEM group = m_tree->AddLabel(TVI_ROOT, title);
    for (const client::TrackRow& track : tracks) {
        AddTrack(group, track);
    }
}

void CPropertyPropPage::AddTrack(HTREEITEM group, const client::TrackRow& track) {
    const HTREEITEM item = m_tree->AddLabel(group, L"In " + std::to_wstring(track.index));
    m_pinItems[item] = track.index;
    m_tree->AddBool(item, kEnabledLabel, track.enabled != 0);
    m_tree->AddText(item, kNameLabel, std::wstring(track.name.View()));
    m_tree->AddList(item, kLanguageLabel, m_languageNames, LanguagePosition(std::wstring(track.language.View())));
    COptionRows::AddFlags(*m_tree, item, m_config, track.index);
}

HRESULT CPropertyPropPage::Apply() noexcept {
    if (!m_tree || m_tree->TreeWindow() == nullptr) {
        // Nothing is shown: either nothing was ever edited, or the edits went with the window.
        return m_bDirty ? E_UNEXPECTED : CBasePropertyPage::Apply();
    }
    const BOOL wasDirty = std::exchange(m_bDirty, TRUE); // or the base would leave a clean page alone
    const HRESULT hr = CBasePropertyPage::Apply();
    if (FAILED(hr)) {
        m_bDirty = wasDirty;
    }
    return hr;
}

HRESULT CPropertyPropPage::OnApplyChanges() {
    const PropTreeItem* const docType = m_tree ? m_tree->GetItem(m_docTypeItem) : nullptr;
    if (!m_config || docType == nullptr) {
        return E_UNEXPECTED;
    }
    for (const auto& [item, index] : m_pinItems) {
        // A track that the filter refuses does not keep the others from being written.
        (void)m_config.SetTrack(EditedTrack(item, index));
        (void)COptionRows::ApplyFlags(*m_tree, item, m_config, index);
    }
    const HRESULT optionsHr = m_options.ApplyOfFile(*m_tree, m_config);
    const HRESULT hr =
        m_config.SetDocType(CPropTree::GetSelectedText(*docType) == kWebm ? MuxDocType_Webm : MuxDocType_Matroska);
    return FAILED(hr) ? hr : optionsHr;
}

const client::TrackRow* CPropertyPropPage::FindTrack(INT32 index) const {
    for (const auto* tracks : {&m_videoTracks, &m_audioTracks, &m_subtitleTracks}) {
        for (const client::TrackRow& track : *tracks) {
            if (track.index == index) {
                return &track;
            }
        }
    }
    return nullptr;
}

// The flags that the page does not show stay as they were read.
client::TrackRow CPropertyPropPage::EditedTrack(HTREEITEM trackItem, INT32 index) const {
    client::TrackRow track;
    if (const client::TrackRow* const asRead = FindTrack(index)) {
        track = *asRead;
    }
    track.index = index;
    track.trackType = MuxTrackType_Unknown;
    for (HTREEITEM child = m_tree->GetFirstChild(trackItem); child != nullptr; child = m_tree->GetNextSibling(child)) {
        if (const PropTreeItem* const item = m_tree->GetItem(child)) {
            TakeOver(*item, track);
        }
    }
    return track;
}

void CPropertyPropPage::TakeOver(const PropTreeItem& item, client::TrackRow& track) const {
    if (item.label == kEnabledLabel) {
        track.enabled = CPropTree::GetBool(item) ? 1 : 0;
    } else if (item.label == kNameLabel) {
        track.name = win::Bstr(CPropTree::GetText(item));
    } else if (item.label == kLanguageLabel &&
               item.selection != LanguagePosition(std::wstring(track.language.View()))) {
        // A language that the list does not have stays what it is until the user chooses another.
        track.language = win::Bstr(CPropTree::GetSelectedText(item));
    }
}

INT_PTR CPropertyPropPage::OnReceiveMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* const notification = message == WM_NOTIFY ? win::FromMessageValue<const NMHDR*>(lParam) : nullptr;
    if (notification != nullptr && m_tree && notification->hwndFrom == m_tree->TreeWindow() &&
        notification->code == 0) {
        SetDirty();
        return TRUE;
    }
    if (m_tree && IsLayoutMessage(hwnd, message)) {
        m_tree->Resize(VisibleAreaOf(hwnd));
    }
    return CBasePropertyPage::OnReceiveMessage(hwnd, message, wParam, lParam);
}

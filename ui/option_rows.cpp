#include "ui/option_rows.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

const std::wstring kStrict = L"strict";

struct FlagRow {
    const wchar_t* label;
    BYTE MuxTrackFlags::*flag;
};

constexpr FlagRow kFlagRows[] = {
    {L"Forced", &MuxTrackFlags::forced},
    {L"Hearing impaired", &MuxTrackFlags::hearingImpaired},
    {L"Visual impaired", &MuxTrackFlags::visualImpaired},
    {L"Original", &MuxTrackFlags::original},
    {L"Commentary", &MuxTrackFlags::commentary},
};

// The choices of a flag's row, and what they stand for.
const std::vector<std::wstring> kFlagNames{L"unset", L"no", L"yes"};
constexpr BYTE kFlagOfChoice[] = {MuxFlag_Unset, MuxFlag_Off, MuxFlag_On};

UINT32 ChoiceOf(BYTE flag) {
    const auto* const found = std::find(std::begin(kFlagOfChoice), std::end(kFlagOfChoice), flag);
    return static_cast<UINT32>(found - std::begin(kFlagOfChoice));
}

// A choice that is none leaves the flag.
void TakeOver(const PropTreeItem& item, MuxTrackFlags& flags) {
    for (const FlagRow& row : kFlagRows) {
        if (item.label == row.label && item.selection < std::size(kFlagOfChoice)) {
            flags.*row.flag = kFlagOfChoice[item.selection];
        }
    }
}

} // namespace

void COptionRows::AddOfFile(CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config) {
    Forget();
    MuxProfile profile = MuxProfile_Compatible;
    if (SUCCEEDED(config.GetProfile(profile))) {
        m_profile = tree.AddList(parent, L"Profile", {L"compatible", kStrict}, profile == MuxProfile_Strict ? 1 : 0);
    }
    if (SUCCEEDED(config.GetTitle(m_knownTitle))) {
        m_title = tree.AddText(parent, L"Title", m_knownTitle);
    }
    bool statistics = true;
    if (SUCCEEDED(config.GetTrackStatistics(statistics))) {
        m_statistics = tree.AddBool(parent, L"Statistics", statistics);
    }
}

void COptionRows::AddFlags(CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config, INT32 index) {
    MuxTrackFlags flags{};
    if (FAILED(config.GetFlags(index, flags))) {
        return;
    }
    for (const FlagRow& row : kFlagRows) {
        tree.AddList(parent, row.label, kFlagNames, ChoiceOf(flags.*row.flag));
    }
}

void COptionRows::Forget() {
    *this = {};
}

HRESULT COptionRows::ApplyOfFile(const CPropTree& tree, const client::ModuleConfig& config) {
    HRESULT firstHr = S_OK;
    const auto keep = [&firstHr](HRESULT hr) { firstHr = FAILED(firstHr) ? firstHr : hr; };
    if (const PropTreeItem* const profile = tree.GetItem(m_profile)) {
        const bool isStrict = CPropTree::GetSelectedText(*profile) == kStrict;
        keep(config.SetProfile(isStrict ? MuxProfile_Strict : MuxProfile_Compatible));
    }
    const PropTreeItem* const title = tree.GetItem(m_title);
    if (title != nullptr && CPropTree::GetText(*title) != m_knownTitle) {
        const HRESULT hr = config.SetTitle(CPropTree::GetText(*title));
        m_knownTitle = SUCCEEDED(hr) ? CPropTree::GetText(*title) : m_knownTitle;
        keep(hr);
    }
    if (const PropTreeItem* const statistics = tree.GetItem(m_statistics)) {
        keep(config.SetTrackStatistics(CPropTree::GetBool(*statistics)));
    }
    return firstHr;
}

HRESULT COptionRows::ApplyFlags(const CPropTree& tree, HTREEITEM parent, const client::ModuleConfig& config,
                                INT32 index) {
    MuxTrackFlags flags{};
    if (const HRESULT hr = config.GetFlags(index, flags); FAILED(hr)) {
        return hr; // and so it has no rows
    }
    for (HTREEITEM child = tree.GetFirstChild(parent); child != nullptr; child = tree.GetNextSibling(child)) {
        if (const PropTreeItem* const item = tree.GetItem(child)) {
            TakeOver(*item, flags);
        }
    }
    return config.SetFlags(flags);
}

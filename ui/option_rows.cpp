#include "ui/option_rows.h"

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <optional>
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

// ---- The room for the index ----------------------------------------------------------------------------------------

const std::wstring kMinutes = L" min";
const std::wstring kBytes = L" bytes";
constexpr LONGLONG kMinute = 60LL * 10000000; // in 100 ns
constexpr size_t kMostDigits = 9;

// "90 min", "4000 bytes", or nothing where none is kept.
std::wstring TextOfIndex(const MuxReservedIndex& index) {
    if (index.bytes > 0) {
        return std::to_wstring(index.bytes) + kBytes;
    }
    const LONGLONG minutes = index.expectedLength / kMinute + (index.expectedLength % kMinute > 0 ? 1 : 0);
    if (minutes == 0) {
        return {};
    }
    std::wstring text = std::to_wstring(minutes);
    text += kMinutes;
    return text;
}

// A number alone counts minutes.
std::optional<MuxReservedIndex> IndexOfText(const std::wstring& text) {
    const size_t digits = std::min(text.find_first_not_of(L"0123456789"), text.size());
    const std::wstring unit = text.substr(digits);
    if (text.empty()) {
        return MuxReservedIndex{};
    }
    if (digits == 0 || digits > kMostDigits || (!unit.empty() && unit != kMinutes && unit != kBytes)) {
        return std::nullopt;
    }
    const UINT64 number = std::wcstoul(text.c_str(), nullptr, 10);
    return unit == kBytes ? MuxReservedIndex{number, 0} : MuxReservedIndex{0, static_cast<LONGLONG>(number) * kMinute};
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
    MuxReservedIndex index{};
    if (SUCCEEDED(config.GetReservedIndex(index))) {
        m_knownIndex = TextOfIndex(index);
        m_index = tree.AddText(parent, L"Index in front", m_knownIndex);
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
    keep(ApplyTitle(tree, config));
    if (const PropTreeItem* const statistics = tree.GetItem(m_statistics)) {
        keep(config.SetTrackStatistics(CPropTree::GetBool(*statistics)));
    }
    keep(ApplyIndex(tree, config));
    return firstHr;
}

HRESULT COptionRows::ApplyTitle(const CPropTree& tree, const client::ModuleConfig& config) {
    const PropTreeItem* const title = tree.GetItem(m_title);
    if (title == nullptr || CPropTree::GetText(*title) == m_knownTitle) {
        return S_OK;
    }
    const HRESULT hr = config.SetTitle(CPropTree::GetText(*title));
    m_knownTitle = SUCCEEDED(hr) ? CPropTree::GetText(*title) : m_knownTitle;
    return hr;
}

HRESULT COptionRows::ApplyIndex(const CPropTree& tree, const client::ModuleConfig& config) {
    const PropTreeItem* const item = tree.GetItem(m_index);
    if (item == nullptr || CPropTree::GetText(*item) == m_knownIndex) {
        return S_OK;
    }
    const auto index = IndexOfText(CPropTree::GetText(*item));
    const HRESULT hr = index ? config.SetReservedIndex(*index) : E_INVALIDARG;
    m_knownIndex = SUCCEEDED(hr) ? CPropTree::GetText(*item) : m_knownIndex;
    return hr;
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

#include "ui/prop_tree_item.h"

#include <algorithm>

namespace {

bool SelectChoice(PropTreeItem& item, const std::wstring& text) {
    if (item.choices.empty()) {
        return false;
    }
    const std::wstring& current = item.selection < item.choices.size() ? item.choices[item.selection] : item.choices[0];
    const auto found = std::find(item.choices.begin(), item.choices.end(), text);
    if (text == current || found == item.choices.end()) {
        return false;
    }
    item.selection = static_cast<UINT32>(found - item.choices.begin());
    return true;
}

} // namespace

const std::wstring& ShownValueOf(const PropTreeItem& item) {
    static const std::wstring kNothing;
    switch (item.kind) {
    case PropItemKind::List:
        return item.selection < item.choices.size() ? item.choices[item.selection] : kNothing;
    case PropItemKind::Text:
        return item.text;
    default:
        return kNothing;
    }
}

bool StoreText(PropTreeItem& item, const std::wstring& text) {
    if (item.kind == PropItemKind::List) {
        return SelectChoice(item, text);
    }
    if (item.kind == PropItemKind::Label || text == item.text) {
        return false;
    }
    item.text = text;
    return true;
}

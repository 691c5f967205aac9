#include "ui/prop_tree_item.h"

#include <algorithm>

namespace {

// What stands in the item reads as its first choice where none is selected, but the first one can be chosen all the
// same.
bool SelectChoice(PropTreeItem& item, const std::wstring& text) {
    const bool isSelected = item.selection < item.choices.size() && item.choices[item.selection] == text;
    const auto found = std::find(item.choices.begin(), item.choices.end(), text);
    if (isSelected || found == item.choices.end()) {
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

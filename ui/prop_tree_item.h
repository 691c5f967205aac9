// PropTreeItem: one row of a property tree, and what it holds.
#pragma once

#include <string>
#include <vector>

#include "win/platform.h"

#include <commctrl.h>

enum class PropItemKind : UINT32 {
    Label = 0, // a group or heading, without a value
    List = 1,  // a Boolean or a choice
    Text = 2,
};

struct PropTreeItem {
    PropItemKind kind = PropItemKind::Label;
    HTREEITEM parent = nullptr;
    std::vector<std::wstring> choices; // of a list
    UINT32 selection = 0;              // of a list: the selected choice; past the end when none is
    std::wstring label;
    std::wstring text; // of a text
};

// What the value column shows: the selected choice, the text, or nothing.
[[nodiscard]] const std::wstring& ShownValueOf(const PropTreeItem& item);

// Takes an edited text over: a text as it is, a list the first choice that equals it. Whether anything changed.
bool StoreText(PropTreeItem& item, const std::wstring& text);

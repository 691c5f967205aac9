// CPropTreeRows: the rows of a property tree's window, and what each of them holds.
//
// Units: pixels of the tree's client area. Owner: CPropTree; the window is not owned. Threads: the window's.
// Errors: a null item for one that could not be added; std::bad_alloc.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "ui/prop_tree_item.h"
#include "ui/window_hook.h"

class CPropTreeRows {
  public:
    explicit CPropTreeRows(const CWindowHook& tree) : m_tree(tree) {}
    CPropTreeRows(const CPropTreeRows&) = delete;
    CPropTreeRows& operator=(const CPropTreeRows&) = delete;

    // A new last child of its parent item, expanded.
    HTREEITEM Add(PropTreeItem item);
    // Null for an unknown item.
    [[nodiscard]] const PropTreeItem* Find(HTREEITEM item) const;
    // Takes an edited text over; whether anything changed.
    bool Store(HTREEITEM item, const std::wstring& text);

    // As the tree control relates them: TVGN_NEXT and its like. Null when there is none.
    [[nodiscard]] HTREEITEM Neighbour(UINT relation, HTREEITEM item) const;
    // False for an item in a collapsed branch.
    [[nodiscard]] bool Rectangle(HTREEITEM item, RECT& row) const;
    // Null where no row is.
    [[nodiscard]] HTREEITEM At(POINT point) const;

    // The number by which accessibility knows an item, and the label and value of the one with that number; none for
    // another number.
    [[nodiscard]] WPARAM AccessibleNumber(HTREEITEM item) const;
    [[nodiscard]] std::optional<std::wstring> AccessibleName(WPARAM child) const;

  private:
    const CWindowHook& m_tree;
    std::map<HTREEITEM, PropTreeItem> m_items;
};

// CPropTree: a two-column property editor: a header above a tree, values painted beside their labels, and an
// in-place editor over the value of the selected item.
//
// Units: pixels. Owner: the page; both windows are destroyed with it, or before it with their parent.
// Threads: that of the parent window. Errors: a null item for one that could not be added; std::bad_alloc.
#pragma once

#include <string>
#include <vector>

#include "ui/prop_tree_editor.h"
#include "ui/prop_tree_header.h"
#include "ui/prop_tree_item.h"
#include "ui/prop_tree_rows.h"
#include "ui/window_hook.h"

class CPropTree {
  public:
    CPropTree();
    virtual ~CPropTree();
    CPropTree(const CPropTree&) = delete;
    CPropTree& operator=(const CPropTree&) = delete;

    // Both windows, as children of the parent. A changed value is told to the parent with WM_NOTIFY of code 0.
    bool Create(HWND parent, const RECT& area);
    // To a new rectangle of the parent; the columns keep their proportion.
    void Resize(const RECT& area);

    // New last children of the parent item, expanded.
    HTREEITEM AddLabel(HTREEITEM parent, const std::wstring& label);
    HTREEITEM AddBool(HTREEITEM parent, const std::wstring& label, bool value);
    HTREEITEM AddList(HTREEITEM parent, const std::wstring& label, const std::vector<std::wstring>& choices,
                      UINT32 selection);
    HTREEITEM AddText(HTREEITEM parent, const std::wstring& label, const std::wstring& text);

    // Null for an unknown item. An edit that is still open is not in the record.
    [[nodiscard]] const PropTreeItem* GetItem(HTREEITEM item) const { return m_rows.Find(item); }
    [[nodiscard]] HTREEITEM GetFirstChild(HTREEITEM item) const;
    [[nodiscard]] HTREEITEM GetNextSibling(HTREEITEM item) const;

    [[nodiscard]] static bool GetBool(const PropTreeItem& item);
    // The first choice when the selection is out of range.
    [[nodiscard]] static const std::wstring& GetSelectedText(const PropTreeItem& item);
    [[nodiscard]] static const std::wstring& GetText(const PropTreeItem& item) { return item.text; }

    [[nodiscard]] HWND TreeWindow() const { return m_tree.Window(); }
    [[nodiscard]] HWND HeaderWindow() const { return m_header.Window(); }

  private:
    // Of the tree's window.
    LRESULT OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void OnTreeDestroyed();
    // What follows once the tree has done its part; the item is the one whose value was clicked.
    void AfterMessage(UINT message, WPARAM wParam, HTREEITEM clicked);
    void OnColumnWidths();
    void OnEditorKey(PropTreeEditorKey key);

    bool CreateTree(HWND parent, const RECT& area);
    void SetRowGeometry() const;
    [[nodiscard]] HFONT Font() const;

    // The item's row and the "Value" column; false for an item in a collapsed branch.
    [[nodiscard]] bool ValueCell(HTREEITEM item, RECT& cell) const;
    void PaintValues(HDC given) const;

    LRESULT TellAccessibleName(WPARAM child, LPARAM text) const;

    void FollowSelection();
    void StoreEdit(HTREEITEM item);
    void OpenEditor(HTREEITEM item);
    void PlaceEditor();
    // The item whose value is at the mouse message's position; null when there is none.
    [[nodiscard]] HTREEITEM ItemOfValueAt(LPARAM position) const;
    void SelectNeighbour(UINT relation) const;
    void LeaveForNextControl() const;

    CWindowHook m_tree; // the window and the procedure that it had before ours
    CPropTreeRows m_rows{m_tree};
    CPropTreeHeader m_header;
    CPropTreeEditor m_editor;
    HTREEITEM m_editedItem = nullptr; // the selected item, with an open editor unless it is a label
};

// TreeDriver: a property tree as its user sees it: rows by their labels, cells, and the open editor.
//
// Units: pixels of the tree's client area. Owner: the test; the windows are the tree's.
// Threads: any; everything is asked by messages, and input is real. Errors: a row that is not there fails the test.
#pragma once

#include <string>
#include <vector>

#include "tests/ui/real_input.h"

#include <commctrl.h>

namespace ui_test {

class TreeDriver {
  public:
    explicit TreeDriver(HWND tree) : m_tree(tree) {}
    // The first property tree below that window.
    static TreeDriver Below(HWND window);

    [[nodiscard]] HWND Tree() const { return m_tree; }
    [[nodiscard]] HWND Header() const;

    // Rows by the labels that lead to them, "Video/In 0/Track Name".
    [[nodiscard]] HTREEITEM Find(const std::wstring& path) const;
    // All rows in order, each with its level as leading dots: "Common", ".DocType".
    [[nodiscard]] std::vector<std::wstring> Rows() const;
    [[nodiscard]] std::wstring LabelOf(HTREEITEM item) const;
    [[nodiscard]] UINT StateOf(HTREEITEM item) const;
    [[nodiscard]] HTREEITEM Selected() const;
    [[nodiscard]] RECT RowOf(HTREEITEM item) const;
    // The row in the "Value" column, as far as it can be seen.
    [[nodiscard]] RECT ValueCellOf(HTREEITEM item) const;

    // The open editor; null when there is none.
    [[nodiscard]] HWND Editor() const;
    [[nodiscard]] RECT EditorArea() const;
    [[nodiscard]] std::vector<std::wstring> EditorChoices() const;

    // Opens the list of the list editor, which shows on the same thread.
    [[nodiscard]] HWND DropDown() const;
    // In the open list editor, with its keys: the first letter, then down to the first choice of that text.
    void ChooseWithKeys(const std::wstring& choice) const;

    void ClickLabel(const std::wstring& path) const;
    void ClickValue(const std::wstring& path) const;

  private:
    void BringIntoSight(HTREEITEM item) const;
    [[nodiscard]] HTREEITEM Next(UINT relation, HTREEITEM item) const;
    void AppendRows(HTREEITEM first, size_t level, std::vector<std::wstring>& rows) const;

    HWND m_tree;
};

} // namespace ui_test

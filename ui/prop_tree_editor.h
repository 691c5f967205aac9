// CPropTreeEditor: the in-place editor of a property tree: an edit box for a text, a drop-down list for choices.
//
// Units: pixels of the tree's client area. Owner: CPropTree; the window is a child of the tree. Threads: the tree's.
// Errors: a window that cannot be created leaves no editor.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "ui/prop_tree_item.h"
#include "ui/window_hook.h"

// What the user asks for with a key while the editor has the focus.
enum class PropTreeEditorKey { TakeOver, GiveUp, NextItem, PreviousItem, NextControl, PreviousControl };

class CPropTreeEditor {
  public:
    // The handler may close the editor, or open it again.
    using KeyHandler = std::function<void(PropTreeEditorKey)>;

    explicit CPropTreeEditor(KeyHandler onKey) : m_onKey(std::move(onKey)) {}
    ~CPropTreeEditor() { Close(); }
    CPropTreeEditor(const CPropTreeEditor&) = delete;
    CPropTreeEditor& operator=(const CPropTreeEditor&) = delete;

    // Nothing for a label.
    void Open(HWND tree, HFONT font, const PropTreeItem& item);
    void Close();
    [[nodiscard]] bool IsOpen() const { return Window() != nullptr; }
    [[nodiscard]] HWND Window() const { return m_hook.Window(); }

    // Over that cell, exactly; the list of choices hangs below.
    void Place(const RECT& cell);
    // The item's value as it is stored.
    void Show(const PropTreeItem& item);
    // At most 255 characters of what the user made of the value; none when it reads as it was shown.
    [[nodiscard]] std::optional<std::wstring> EditedText() const;

  private:
    LRESULT OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    void OnDestroyed() {} // the tree goes, and its child with it
    [[nodiscard]] std::optional<PropTreeEditorKey> MeaningOf(WPARAM virtualKey) const;
    [[nodiscard]] bool IsDroppedDown() const;
    void FillChoices(HFONT font, const PropTreeItem& item) const;
    [[nodiscard]] int OpenListHeight() const;
    void FitClosedList(int height) const;
    void MakeRoomForOpenList(const RECT& cell) const;

    CWindowHook m_hook;
    HFONT m_font = nullptr; // not owned
    PropItemKind m_kind = PropItemKind::Label;
    RECT m_cell{};
    std::wstring m_shownText; // as the window reads when nobody has edited it
    KeyHandler m_onKey;
};

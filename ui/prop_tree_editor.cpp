#include "ui/prop_tree_editor.h"

#include <algorithm>

#include "dshow/com_guard.h"
#include "ui/window_dc.h"
#include "win/message_value.h"

namespace {

constexpr size_t kMaxEditedChars = 255;
// A longer list scrolls.
constexpr int kMaxVisibleChoices = 12;
constexpr int kListPaddingAt96 = 8;

constexpr DWORD kEditStyle = WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL;
constexpr DWORD kListStyle = WS_CHILD | WS_VISIBLE | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_HASSTRINGS;

std::wstring TextOf(HWND window) {
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

// Half a surrogate pair is no character.
std::wstring FirstChars(std::wstring text) {
    if (text.size() > kMaxEditedChars) {
        const bool splits = IS_SURROGATE_PAIR(text[kMaxEditedChars - 1], text[kMaxEditedChars]);
        text.resize(splits ? kMaxEditedChars - 1 : kMaxEditedChars);
    }
    return text;
}

} // namespace

void PropTreeEditor::Open(HWND tree, HFONT font, const PropTreeItem& item) {
    Close();
    if (item.kind == PropItemKind::Label) {
        return;
    }
    m_kind = item.kind;
    m_font = font;
    m_cell = {};
    const bool isList = m_kind == PropItemKind::List;
    m_window = CreateWindowExW(0, isList ? WC_COMBOBOXW : WC_EDITW, nullptr, isList ? kListStyle : kEditStyle, 0, 0, 0,
                               0, tree, nullptr, nullptr, nullptr);
    if (m_window == nullptr) {
        return;
    }
    SendMessageW(m_window, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    SetWindowLongPtrW(m_window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_previousProc = win::FromMessageValue<WNDPROC>(
        SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&PropTreeEditor::EditorProc)));
    if (isList) {
        FillChoices(font, item);
    } else {
        SendMessageW(m_window, EM_SETLIMITTEXT, kMaxEditedChars, 0);
    }
    Show(item);
}

void PropTreeEditor::Close() {
    if (const HWND window = std::exchange(m_window, nullptr)) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(m_previousProc));
        DestroyWindow(window);
    }
}

void PropTreeEditor::FillChoices(HFONT font, const PropTreeItem& item) const {
    const WindowDc dc(m_window, font);
    LONG widest = 0;
    SendMessageW(m_window, WM_SETREDRAW, FALSE, 0);
    for (const std::wstring& choice : item.choices) {
        SendMessageW(m_window, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(choice.c_str()));
        widest = std::max(widest, dc.Measure(choice).cx);
    }
    SendMessageW(m_window, WM_SETREDRAW, TRUE, 0);
    // Wide enough for every choice, however narrow the value column is.
    const int width = widest + GetSystemMetrics(SM_CXVSCROLL) + dc.Scale(kListPaddingAt96);
    SendMessageW(m_window, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(width), 0);
    SendMessageW(m_window, CB_SETMINVISIBLE, kMaxVisibleChoices, 0); // themed lists count rows; others do not know it
}

void PropTreeEditor::Show(const PropTreeItem& item) {
    if (m_window == nullptr) {
        return;
    }
    if (m_kind == PropItemKind::List) {
        SendMessageW(m_window, CB_SETCURSEL, item.selection, 0);
    } else {
        SetWindowTextW(m_window, item.text.c_str());
        SendMessageW(m_window, EM_SETSEL, 0, -1);
    }
    m_shownText = TextOf(m_window);
}

std::optional<std::wstring> PropTreeEditor::EditedText() const {
    std::wstring text = m_window != nullptr ? TextOf(m_window) : m_shownText;
    return text == m_shownText ? std::nullopt : std::optional(FirstChars(std::move(text)));
}

void PropTreeEditor::Place(const RECT& cell) {
    if (m_window == nullptr || EqualRect(&cell, &m_cell)) {
        return;
    }
    const int width = cell.right - cell.left;
    const int height = cell.bottom - cell.top;
    const bool keepsSize = width == m_cell.right - m_cell.left && height == m_cell.bottom - m_cell.top;
    m_cell = cell;
    if (keepsSize) {
        SetWindowPos(m_window, nullptr, cell.left, cell.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    } else if (m_kind == PropItemKind::List) {
        MoveWindow(m_window, cell.left, cell.top, width, height, TRUE);
        MakeRoomForOpenList(cell);
        FitClosedList(height);
    } else {
        MoveWindow(m_window, cell.left, cell.top, width, height, TRUE);
    }
}

// Of the whole rows that can be seen at once, in their frame.
int PropTreeEditor::OpenListHeight() const {
    const auto rowHeight = static_cast<int>(SendMessageW(m_window, CB_GETITEMHEIGHT, 0, 0));
    const auto choices = static_cast<int>(SendMessageW(m_window, CB_GETCOUNT, 0, 0));
    return std::clamp(choices, 1, kMaxVisibleChoices) * rowHeight + 2 * GetSystemMetrics(SM_CYBORDER);
}

// A drop-down list is sized with its open list in the height, which gets what the closed one leaves. How high the
// closed one is at that moment is the system's affair: it can be fitted to the cell only afterwards, and the open list
// keeps its height then.
void PropTreeEditor::MakeRoomForOpenList(const RECT& cell) const {
    RECT closed{};
    GetWindowRect(m_window, &closed);
    MoveWindow(m_window, cell.left, cell.top, cell.right - cell.left, closed.bottom - closed.top + OpenListHeight(),
               TRUE);
}

// The closed height follows from that of the text field, with a frame around it that differs between systems.
void PropTreeEditor::FitClosedList(int height) const {
    constexpr int kAttempts = 3;
    auto field = static_cast<int>(SendMessageW(m_window, CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        RECT window{};
        GetWindowRect(m_window, &window);
        const int missing = height - static_cast<int>(window.bottom - window.top);
        if (missing == 0) {
            return;
        }
        field = std::max(1, field + missing);
        SendMessageW(m_window, CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), field);
    }
}

bool PropTreeEditor::IsDroppedDown() const {
    return m_kind == PropItemKind::List && SendMessageW(m_window, CB_GETDROPPEDSTATE, 0, 0) != FALSE;
}

std::optional<PropTreeEditorKey> PropTreeEditor::MeaningOf(WPARAM virtualKey) const {
    switch (virtualKey) {
    case VK_RETURN:
        return PropTreeEditorKey::TakeOver;
    case VK_ESCAPE:
        return IsDroppedDown() ? std::nullopt : std::optional(PropTreeEditorKey::GiveUp); // it closes the list first
    case VK_TAB:
        return GetKeyState(VK_SHIFT) < 0 ? PropTreeEditorKey::PreviousControl : PropTreeEditorKey::NextControl;
    case VK_UP:
    case VK_DOWN:
        if (m_kind == PropItemKind::List) {
            return std::nullopt; // they choose from the list
        }
        return virtualKey == VK_UP ? PropTreeEditorKey::PreviousItem : PropTreeEditorKey::NextItem;
    default:
        return std::nullopt;
    }
}

LRESULT PropTreeEditor::OnMessage(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    const WNDPROC previous = m_previousProc;
    switch (message) {
    case WM_GETDLGCODE:
        // Enter and Escape are for the edit, not for the frame's buttons.
        return CallWindowProcW(previous, hwnd, message, wParam, lParam) | DLGC_WANTALLKEYS;
    case WM_CHAR:
        if (wParam == VK_RETURN || wParam == VK_ESCAPE || wParam == VK_TAB) {
            return 0; // the key did what it means; the character would make the edit box beep
        }
        break;
    case WM_MOUSEWHEEL:
        if (!IsDroppedDown()) {
            return SendMessageW(GetParent(hwnd), message, wParam, lParam); // scrolls the tree, changes no value
        }
        break;
    case WM_KEYDOWN:
        if (const auto key = MeaningOf(wParam)) {
            if (IsDroppedDown()) {
                SendMessageW(hwnd, CB_SHOWDROPDOWN, FALSE, 0);
            }
            const KeyHandler handler = m_onKey; // it may end this object
            handler(*key);
            return 0;
        }
        break;
    default:
        break;
    }
    return CallWindowProcW(previous, hwnd, message, wParam, lParam);
}

LRESULT CALLBACK PropTreeEditor::EditorProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    auto* const editor = win::FromMessageValue<PropTreeEditor*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
    if (editor == nullptr) {
        return DefWindowProcW(hwnd, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY) {
        // The tree goes, and its child with it.
        editor->m_window = nullptr;
        return CallWindowProcW(editor->m_previousProc, hwnd, message, wParam, lParam);
    }
    LRESULT result = 0;
    static_cast<void>(ComGuard([&] {
        result = editor->OnMessage(hwnd, message, wParam, lParam);
        return S_OK;
    }));
    return result;
}

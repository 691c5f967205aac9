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

void CPropTreeEditor::Open(HWND tree, HFONT font, const PropTreeItem& item) {
    Close();
    if (item.kind == PropItemKind::Label) {
        return;
    }
    m_kind = item.kind;
    m_font = font;
    m_cell = {};
    const bool isList = m_kind == PropItemKind::List;
    const HWND window = CreateWindowExW(0, isList ? WC_COMBOBOXW : WC_EDITW, nullptr, isList ? kListStyle : kEditStyle,
                                        0, 0, 0, 0, tree, nullptr, nullptr, nullptr);
    if (window == nullptr) {
        return;
    }
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    m_hook.Set<&CPropTreeEditor::m_hook, &CPropTreeEditor::OnMessage, &CPropTreeEditor::OnDestroyed>(window, *this);
    if (isList) {
        FillChoices(font, item);
    } else {
        SendMessageW(Window(), EM_SETLIMITTEXT, kMaxEditedChars, 0);
    }
    Show(item);
}

void CPropTreeEditor::Close() {
    if (const HWND window = Window()) {
        m_hook.Release();
        DestroyWindow(window);
    }
}

void CPropTreeEditor::FillChoices(HFONT font, const PropTreeItem& item) const {
    const CWindowDc dc(Window(), font);
    LONG widest = 0;
    SendMessageW(Window(), WM_SETREDRAW, FALSE, 0);
    for (const std::wstring& choice : item.choices) {
        SendMessageW(Window(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(choice.c_str()));
        widest = std::max(widest, dc.Measure(choice).cx);
    }
    SendMessageW(Window(), WM_SETREDRAW, TRUE, 0);
    // Wide enough for every choice, however narrow the value column is.
    const int width = widest + GetSystemMetrics(SM_CXVSCROLL) + dc.Scale(kListPaddingAt96);
    SendMessageW(Window(), CB_SETDROPPEDWIDTH, static_cast<WPARAM>(width), 0);
    SendMessageW(Window(), CB_SETMINVISIBLE, kMaxVisibleChoices, 0); // themed lists count rows; others do not know it
}

void CPropTreeEditor::Show(const PropTreeItem& item) {
    if (Window() == nullptr) {
        return;
    }
    if (m_kind == PropItemKind::List) {
        SendMessageW(Window(), CB_SETCURSEL, item.selection, 0);
    } else {
        SetWindowTextW(Window(), item.text.c_str());
        SendMessageW(Window(), EM_SETSEL, 0, -1);
    }
    m_shownText = TextOf(Window());
}

std::optional<std::wstring> CPropTreeEditor::EditedText() const {
    std::wstring text = Window() != nullptr ? TextOf(Window()) : m_shownText;
    return text == m_shownText ? std::nullopt : std::optional(FirstChars(std::move(text)));
}

void CPropTreeEditor::Place(const RECT& cell) {
    if (Window() == nullptr || EqualRect(&cell, &m_cell)) {
        return;
    }
    const int width = cell.right - cell.left;
    const int height = cell.bottom - cell.top;
    const bool keepsSize = width == m_cell.right - m_cell.left && height == m_cell.bottom - m_cell.top;
    m_cell = cell;
    if (keepsSize) {
        SetWindowPos(Window(), nullptr, cell.left, cell.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
    } else if (m_kind == PropItemKind::List) {
        MoveWindow(Window(), cell.left, cell.top, width, height, TRUE);
        MakeRoomForOpenList(cell);
        FitClosedList(height);
    } else {
        MoveWindow(Window(), cell.left, cell.top, width, height, TRUE);
    }
}

// Of the whole rows that can be seen at once, in their frame.
int CPropTreeEditor::OpenListHeight() const {
    const auto rowHeight = static_cast<int>(SendMessageW(Window(), CB_GETITEMHEIGHT, 0, 0));
    const auto choices = static_cast<int>(SendMessageW(Window(), CB_GETCOUNT, 0, 0));
    return std::clamp(choices, 1, kMaxVisibleChoices) * rowHeight + 2 * GetSystemMetrics(SM_CYBORDER);
}

// A drop-down list is sized with its open list in the height, which gets what the closed one leaves. How high the
// closed one is at that moment is the system's affair: it can be fitted to the cell only afterwards, and the open list
// keeps its height then.
void CPropTreeEditor::MakeRoomForOpenList(const RECT& cell) const {
    RECT closed{};
    GetWindowRect(Window(), &closed);
    MoveWindow(Window(), cell.left, cell.top, cell.right - cell.left, closed.bottom - closed.top + OpenListHeight(),
               TRUE);
}

// The closed height follows from that of the text field, with a frame around it that differs between systems.
void CPropTreeEditor::FitClosedList(int height) const {
    constexpr int kAttempts = 3;
    auto field = static_cast<int>(SendMessageW(Window(), CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0));
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        RECT window{};
        GetWindowRect(Window(), &window);
        const int missing = height - static_cast<int>(window.bottom - window.top);
        if (missing == 0) {
            return;
        }
        field = std::max(1, field + missing);
        SendMessageW(Window(), CB_SETITEMHEIGHT, static_cast<WPARAM>(-1), field);
    }
}

bool CPropTreeEditor::IsDroppedDown() const {
    return m_kind == PropItemKind::List && SendMessageW(Window(), CB_GETDROPPEDSTATE, 0, 0) != FALSE;
}

std::optional<PropTreeEditorKey> CPropTreeEditor::MeaningOf(WPARAM virtualKey) const {
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

LRESULT CPropTreeEditor::Answer(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_GETDLGCODE:
        // Enter and Escape are for the edit, not for the frame's buttons.
        return m_hook.Ask(message, wParam, lParam) | DLGC_WANTALLKEYS;
    case WM_CHAR:
        if (wParam == VK_RETURN || wParam == VK_ESCAPE || wParam == VK_TAB) {
            return 0; // the key did what it means; the character would make the edit box beep
        }
        break;
    case WM_MOUSEWHEEL:
        if (!IsDroppedDown()) {
            return SendMessageW(GetParent(window), message, wParam, lParam); // scrolls the tree, changes no value
        }
        break;
    case WM_KEYDOWN:
        if (const auto key = MeaningOf(wParam)) {
            if (IsDroppedDown()) {
                SendMessageW(window, CB_SHOWDROPDOWN, FALSE, 0);
            }
            const KeyHandler handler = m_onKey; // it may end this object
            handler(*key);
            return 0;
        }
        break;
    default:
        break;
    }
    return m_hook.Ask(message, wParam, lParam);
}

LRESULT CPropTreeEditor::OnMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    (void)ComGuard([&] {
        result = Answer(window, message, wParam, lParam);
        return S_OK;
    });
    return result;
}

#include "ui/prop_tree_rows.h"

#include <cstring>
#include <utility>

#include "win/message_value.h"

HTREEITEM CPropTreeRows::Add(PropTreeItem item) {
    TVINSERTSTRUCTW row{};
    row.hParent = item.parent;
    row.hInsertAfter = TVI_LAST;
    row.item.mask = TVIF_TEXT | TVIF_STATE;
    row.item.state = TVIS_EXPANDED | (item.kind == PropItemKind::Label ? static_cast<UINT>(TVIS_BOLD) : 0);
    row.item.stateMask = row.item.state;
    row.item.pszText = item.label.data();
    const auto handle =
        win::FromMessageValue<HTREEITEM>(m_tree.Ask(TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&row)));
    if (handle != nullptr) {
        m_items[handle] = std::move(item);
    }
    return handle;
}

const PropTreeItem* CPropTreeRows::Find(HTREEITEM item) const {
    const auto found = m_items.find(item);
    return found != m_items.end() ? &found->second : nullptr;
}

bool CPropTreeRows::Store(HTREEITEM item, const std::wstring& text) {
    const auto found = m_items.find(item);
    return found != m_items.end() && StoreText(found->second, text);
}

HTREEITEM CPropTreeRows::Neighbour(UINT relation, HTREEITEM item) const {
    return win::FromMessageValue<HTREEITEM>(m_tree.Ask(TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
}

bool CPropTreeRows::Rectangle(HTREEITEM item, RECT& row) const {
    std::memcpy(&row, &item, sizeof(item)); // NOLINT(bugprone-sizeof-expression): TVM_GETITEMRECT reads it there
    return m_tree.Ask(TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&row)) != FALSE;
}

HTREEITEM CPropTreeRows::At(POINT point) const {
    TVHITTESTINFO hit{};
    hit.pt = point;
    return win::FromMessageValue<HTREEITEM>(m_tree.Ask(TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit)));
}

// Trees of the newer common controls number their items; the older ones give the handle, of which 32 bits travel.
WPARAM CPropTreeRows::AccessibleNumber(HTREEITEM item) const {
    const auto number = static_cast<UINT>(m_tree.Ask(TVM_MAPHTREEITEMTOACCID, reinterpret_cast<WPARAM>(item), 0));
    return number != 0 ? number : static_cast<UINT>(reinterpret_cast<UINT_PTR>(item));
}

std::optional<std::wstring> CPropTreeRows::AccessibleName(WPARAM child) const {
    for (const auto& [item, record] : m_items) {
        if (AccessibleNumber(item) == static_cast<UINT>(child)) {
            return record.kind == PropItemKind::Label ? record.label : record.label + L": " + ShownValueOf(record);
        }
    }
    return {};
}

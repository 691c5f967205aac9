// What screen readers are told of a property tree: the value column is painted, and they would know the labels alone.
//
// The system's own accessible object of the tree, with names of the form "label: value" for the items.
//
// Owner: whoever holds references; it outlives the tree if need be. Threads: the tree's; COM leads others there.
// Errors: 0 when the system has no accessibility library, and the message then goes its usual way.
#pragma once

#include <string>

#include "win/platform.h"

// Sent to the tree by its accessible object: wParam is the child's number there, lParam a std::wstring* for its name.
// Nonzero when there is such an item.
inline constexpr UINT kNameOfAccessibleChild = WM_APP + 2;

// The answer to WM_GETOBJECT for OBJID_CLIENT.
[[nodiscard]] LRESULT AccessibleTree(HWND tree, WPARAM wParam) noexcept;
